#include "domain/paymentqrcode.h"

#include <QTest>

// The text of the payment QR code, field by field, and the cases that give none.
class TestPaymentQrCode : public QObject
{
    Q_OBJECT

private slots:
    void fields_data();
    void fields();
};

void TestPaymentQrCode::fields_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("iban");
    QTest::addColumn<QString>("bic");
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<QString>("reference");
    QTest::addColumn<QString>("expected"); // empty: no code

    const QString head = QStringLiteral("BCD\n002\n1\nSCT\n");
    QTest::addRow("national reference in the remittance text")
        << "Kuusela Design Oy"
        << "FI34 5720 0020 0865 97"
        << "OKOYFIHH" << qint64(139804) << "12 34561"
        << head + "OKOYFIHH\nKuusela Design Oy\nFI3457200020086597\nEUR1398.04\n\n\n1234561";
    QTest::addRow("RF reference structured, lower case written upper")
        << "Kuusela Design Oy"
        << "FI3457200020086597"
        << "OKOYFIHH" << qint64(5) << "rf18 5390 0754 7034"
        << head + "OKOYFIHH\nKuusela Design Oy\nFI3457200020086597\nEUR0.05\n\nRF18539007547034";
    QTest::addRow("no BIC, no reference")
        << "Ääninen Tmi"
        << "FI3457200020086597"
        << "" << qint64(100) << "" << head + "\nÄäninen Tmi\nFI3457200020086597\nEUR1.00";
    QTest::addRow("largest amount") << "A"
                                    << "FI3457200020086597"
                                    << "" << PaymentQrCode::maxAmount << ""
                                    << head + "\nA\nFI3457200020086597\nEUR999999999.99";
    QTest::addRow("name cut to 70")
        << QString(80, u'x') << "FI3457200020086597"
        << "" << qint64(100) << ""
        << head + "\n" + QString(70, u'x') + "\nFI3457200020086597\nEUR1.00";
    QTest::addRow("zero amount") << "A"
                                 << "FI3457200020086597"
                                 << "" << qint64(0) << "1234561"
                                 << "";
    QTest::addRow("negative amount") << "A"
                                     << "FI3457200020086597"
                                     << "" << qint64(-100) << "1234561"
                                     << "";
    QTest::addRow("amount too large") << "A"
                                      << "FI3457200020086597"
                                      << "" << PaymentQrCode::maxAmount + 1 << ""
                                      << "";
    QTest::addRow("IBAN check digits wrong") << "A"
                                             << "FI3557200020086597"
                                             << "" << qint64(100) << ""
                                             << "";
    QTest::addRow("no IBAN") << "A"
                             << ""
                             << "" << qint64(100) << ""
                             << "";
    QTest::addRow("RF reference too long") << "A"
                                           << "FI3457200020086597"
                                           << "" << qint64(100) << "RF" + QString(34, u'1') << "";
    QTest::addRow("no name") << " "
                             << "FI3457200020086597"
                             << "" << qint64(100) << ""
                             << "";
}

void TestPaymentQrCode::fields()
{
    QFETCH(QString, name);
    QFETCH(QString, iban);
    QFETCH(QString, bic);
    QFETCH(qint64, amount);
    QFETCH(QString, reference);
    QFETCH(QString, expected);
    QCOMPARE(PaymentQrCode::text(name, iban, bic, amount, reference), expected);
}

QTEST_APPLESS_MAIN(TestPaymentQrCode)
#include "tst_paymentqrcode.moc"
