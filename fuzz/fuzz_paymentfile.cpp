// A bank file of any format: recognised by its first bytes and read whole.
#include "fuzzinput.h"
#include "payments/paymentfilereader.h"
#include "payments/paymentlistener.h"

#include <QBuffer>
#include <QDateTime>

#include <limits>

namespace {

// Checks what the importer relies on in every payment it hears of.
class CheckingListener : public PaymentListener
{
public:
    PaymentFileReader* reader = nullptr;

    void accountRead() override { }
    void paymentRead() override
    {
        // The payment date decides the invoice's payment; a wrapped amount
        // could never be told from a real one.
        if (!reader->paymentDate().isValid() || reader->amount() == std::numeric_limits<int>::min())
            __builtin_trap();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // Broken lines are logged one by one: keep them out of the output.
    static const QtMessageHandler previous
        = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    Q_UNUSED(previous);
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    CheckingListener listener;
    PaymentFileReader reader(&listener);
    listener.reader = &reader;
    const bool ok = reader.read(
        buffer, QStringLiteral("fuzz.txt"), QDateTime(QDate(2026, 11, 24), QTime(12, 0), Qt::UTC));
    // A refused file always says why.
    if (ok == !reader.lastError().isEmpty())
        __builtin_trap();
    return 0;
}
