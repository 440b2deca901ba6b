#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/entityutil.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "recordfields.h"
#include "samplerecords.h"

#include <QTest>

namespace {

// A copy equals its source; clear() brings back every field of a new record.
template<class Record>
void checkCopyAndClear(const Record& source)
{
    Record target;
    source.copy(&target);
    QCOMPARE(RecordFields::of(target), RecordFields::of(source));
    if constexpr (
        std::is_same_v<Record,
            Customer> || std::is_same_v<Record, Invoice> || std::is_same_v<Record, Settings> || std::is_same_v<Record, Product>) {
        QVERIFY(RecordFields::of(target) != RecordFields::of(Record()));
        target.clear();
        QCOMPARE(RecordFields::of(target), RecordFields::of(Record()));
    }
}

} // namespace

class TestRecords : public QObject
{
    Q_OBJECT

private slots:
    void businessIdCheckDigitAgainstHandSum()
    {
        // The rule written out here: weights 7 9 10 5 8 4 2, mod 11, a
        // remainder of 1 has no digit. Every id of a range, both ways.
        static const int weights[7] = { 7, 9, 10, 5, 8, 4, 2 };
        for (int number = 1234000; number < 1236000; ++number) {
            const QString digits = QString::number(number).rightJustified(7, QLatin1Char('0'));
            int sum = 0;
            for (int i = 0; i < 7; ++i)
                sum += digits.at(i).digitValue() * weights[i];
            const int remainder = sum % 11;
            const int expected = remainder == 1 ? -1 : (remainder == 0 ? 0 : 11 - remainder);
            QCOMPARE(Customer::businessIdCheckDigit(digits), expected);
            for (int check = 0; check <= 9; ++check) {
                const QString id = digits + QLatin1Char('-') + QString::number(check);
                QCOMPARE(Customer::isValidBusinessId(id), check == expected);
                if (check == expected) {
                    const QString vat = QStringLiteral("FI") + digits + QString::number(check);
                    QCOMPARE(Customer::convertBusinessIdToVatNumber(id), vat);
                    QCOMPARE(Customer::convertVatNumberToBusinessId(vat.toLower()), id);
                }
            }
        }
        QCOMPARE(Customer::businessIdCheckDigit(QStringLiteral("123456x")), -1);
        // Spaces around an id and inside a VAT number, in either case.
        QVERIFY(Customer::isValidBusinessId(" 0112038-9 "));
        QVERIFY(Customer::isValidVatNumberOrBusinessId("fi 0112 0389"));
        // Invalid ids are left as they are.
        QCOMPARE(Customer::convertBusinessIdToVatNumber("0112038-8"), QStringLiteral("0112038-8"));
    }

    void propertyText_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("readBack");
        QTest::addRow("line feeds") << "a\nb\r\n"
                                    << "a\\nb\\n"
                                    << "a\nb\n";
        QTest::addRow("backslashes") << "C:\\tmp\\new"
                                     << "C:\\\\tmp\\\\new"
                                     << "C:\\tmp\\new";
        // A backslash before a line feed: the stored "\\\n" is read back as
        // two backslashes and an n, which older databases rely on.
        QTest::addRow("backslash, line feed") << "x\\\ny"
                                              << "x\\\\\\ny"
                                              << "x\\\\ny";
        QTest::addRow("equals sign") << "a=b"
                                     << "a=b"
                                     << "a=b";
    }

    void propertyText()
    {
        QFETCH(QString, value);
        QFETCH(QString, stored);
        QFETCH(QString, readBack);
        QCOMPARE(EntityUtil::escapeString(value), stored);
        QMap<QString, QVariant> properties { { "fi/text", value }, { "other", "1" } };
        const QString text = EntityUtil::propertiesToString(properties);
        QCOMPARE(text, "fi/text=" + stored + "\nother=1\n");
        EntityUtil::propertiesFromString(text + "\nno equals sign\n", properties);
        QCOMPARE(properties.value("fi/text").toString(), readBack);
        EntityUtil::setPropertyIfNotEmpty(properties, "fi/more", "");
        EntityUtil::setPropertyIfNotEmpty(properties, "other", "");
        EntityUtil::removePropertiesWithPrefix(properties, "fi/");
        QVERIFY(properties.isEmpty());
    }

    void copyAndClear()
    {
        checkCopyAndClear(SampleRecords::customer());
        checkCopyAndClear(SampleRecords::invoice(6));
        checkCopyAndClear(SampleRecords::settings());
        checkCopyAndClear(SampleRecords::product());
        checkCopyAndClear(SampleRecords::invoiceItem(7));
        QCOMPARE(
            RecordFields::of(BankAccount()).filter("visible="), QStringList { "visible=true" });
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
