// The clipboard rows of the invoice editor: tab-separated lines pasted into
// the row model, which then formats them for display.
#include "core/invoiceitemtablemodel.h"
#include "core/registry.h"
#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Registry registry;
    InvoiceItemTableModel model(&registry);
    model.setVatFree(size % 2 == 1);
    const int added = model.invoiceItemsFromString(fuzzText(data, size));
    for (int row = 0; row < added; ++row) {
        for (int column = 0; column < model.columnCount(); ++column)
            model.data(model.index(row, column));
        QString text;
        model.invoiceItemToString(row, text);
    }
    model.totalAmountVatIncluded();
    return 0;
}
