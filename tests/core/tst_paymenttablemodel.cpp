#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/payment.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using Model = PaymentTableModel;

class TestPaymentTableModel : public QObject
{
    Q_OBJECT

private slots:
    void editing_data();
    void editing();
};

void TestPaymentTableModel::editing_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("editable");
    QTest::addColumn<QString>("expected"); // date and amount afterwards
    QTest::addRow("date as digits") << 0 << "15032024" << true << "2024-03-15 5000";
    QTest::addRow("impossible date") << 0 << "31.2.2024" << true << "2024-02-01 5000";
    QTest::addRow("date cleared") << 0 << "" << true << " 5000";
    QTest::addRow("amount") << 1 << " -1234.5 " << true << "2024-02-01 -123450";
    QTest::addRow("same amount") << 1 << "50" << true << "2024-02-01 5000";
    QTest::addRow("read-only") << 1 << "7" << false << "2024-02-01 5000";
}

void TestPaymentTableModel::editing()
{
    QFETCH(int, column);
    QFETCH(QString, value);
    QFETCH(bool, editable);
    QFETCH(QString, expected);
    Registry registry;
    Model model(&registry);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Payment payment;
    payment.date = QDate(2024, 2, 1);
    payment.amount = 5000;
    model.setEditable(true);
    model.addPayment(payment);
    model.committed();
    model.setEditable(editable);
    QCOMPARE(bool(model.index(0, column).flags() & Qt::ItemIsEditable), editable);

    QSignalSpy spy(&model, &QAbstractItemModel::dataChanged);
    const bool accepted = model.setData(model.index(0, column), value);
    const Payment* edited = model.paymentAt(0);
    QCOMPARE(
        edited->date.toString(Qt::ISODate) + QLatin1Char(' ') + QString::number(edited->amount),
        expected);
    QCOMPARE(accepted, expected != QStringLiteral("2024-02-01 5000"));
    QCOMPARE(QList<int>({ model.isChanged(), int(spy.count()) }), QList<int>(2, accepted));
}

QTEST_MAIN(TestPaymentTableModel)
#include "tst_paymenttablemodel.moc"
