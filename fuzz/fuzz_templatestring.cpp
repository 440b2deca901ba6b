// The template strings of file names and texts: "$" codes, "{{ name }}"
// placeholders and "{I}" short codes over a filled-in invoice.
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "fuzzinput.h"
#include "util/templatestringhelper.h"

namespace {
struct Sample
{
    Settings settings;
    BankAccount account;
    Customer customer;
    Invoice invoice;
    QList<BankAccount*> accounts;

    Sample()
    {
        account.iban = QStringLiteral("FI2112345600000785");
        account.bic = QStringLiteral("NDEAFIHH");
        accounts = { &account };
        customer.number = 42;
        customer.name = QStringLiteral("Mäkelä & Co");
        invoice.number = 1001;
        invoice.date = QDate(2025, 3, 3);
        invoice.dueDate = QDate(2025, 3, 17);
        invoice.referenceNumber = QStringLiteral("10016");
        invoice.totalAmount = 12550;
        invoice.balance = 2550;
    }
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Sample sample;
    const QString text = fuzzText(data, size);
    TemplateStringHelper helper(&sample.settings, sample.accounts);
    helper.appendVariable(QStringLiteral("oma"), QStringLiteral("<arvo & {{ oma }}>"));
    helper.setEscapeEnabled(size % 2 == 1);
    helper.substituteVariables(text, &sample.invoice, &sample.customer);
    helper.substituteShortVariables(
        text, &sample.invoice, &sample.customer, size > 0 ? data[0] % 6 : 0);
    TemplateStringHelper::toAscii(TemplateStringHelper::removeInvalidCharacters(text));
    return 0;
}
