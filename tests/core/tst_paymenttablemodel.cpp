#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/payment.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using Model = PaymentTableModel;

class TestPaymentTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void editing_data();
    void editing();
    void bankAccountTotalsAndDates();

private:
    void addPayment(const QDate& date, int amount, int bankAccountId = -1)
    {
        Payment payment;
        payment.id = 12; // a copy is always a new payment
        payment.date = date;
        payment.amount = amount;
        payment.bankAccountId = bankAccountId;
        m_model->addPayment(payment);
    }

    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<Model> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    QList<int> m_accountIds;
};

void TestPaymentTableModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    std::unique_ptr<Query> query(m_db->database()->query());
    for (const char* name : { "Käyttötili", "Säästötili" }) {
        BankAccount account;
        account.name = QString::fromUtf8(name);
        QVERIFY(query->saveBankAccount(&account));
        m_accountIds.append(account.id);
    }
    m_registry = std::make_unique<Registry>();
    QVERIFY(m_registry->fetchBankAccounts(query.get()));
}

void TestPaymentTableModel::init()
{
    m_model = std::make_unique<Model>(m_registry.get());
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    m_model->setEditable(true);
}

void TestPaymentTableModel::cleanup()
{
    m_tester.reset();
    m_model.reset();
}

void TestPaymentTableModel::editing_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("editable");
    QTest::addColumn<QString>("expected"); // date and amount afterwards
    QTest::addRow("date as digits") << 0 << "15032024" << true << "2024-03-15 5000";
    QTest::addRow("impossible date") << 0 << "31.2.2024" << true << "2024-02-01 5000";
    QTest::addRow("date cleared") << 0 << "" << true << " 5000";
    QTest::addRow("same date") << 0 << "1.2.2024" << true << "2024-02-01 5000";
    QTest::addRow("amount") << 1 << " -1234.5 " << true << "2024-02-01 -123450";
    QTest::addRow("amount text") << 1 << "abc" << true << "2024-02-01 5000";
    QTest::addRow("same amount") << 1 << "50" << true << "2024-02-01 5000";
    QTest::addRow("read-only") << 1 << "7" << false << "2024-02-01 5000";
}

void TestPaymentTableModel::editing()
{
    QFETCH(int, column);
    QFETCH(QString, value);
    QFETCH(bool, editable);
    QFETCH(QString, expected);
    addPayment(QDate(2024, 2, 1), 5000);
    QCOMPARE(m_model->paymentAt(0)->id, -1);
    m_model->committed();
    m_model->setEditable(editable);
    QCOMPARE(bool(m_model->index(0, column).flags() & Qt::ItemIsEditable), editable);

    QSignalSpy spy(m_model.get(), &QAbstractItemModel::dataChanged);
    const bool accepted = m_model->setData(m_model->index(0, column), value);
    const Payment* payment = m_model->paymentAt(0);
    QCOMPARE(
        payment->date.toString(Qt::ISODate) + QLatin1Char(' ') + QString::number(payment->amount),
        expected);
    QCOMPARE(accepted, expected != QStringLiteral("2024-02-01 5000"));
    QCOMPARE(m_model->isChanged(), accepted);
    QCOMPARE(spy.count(), accepted ? 1 : 0);
}

void TestPaymentTableModel::bankAccountTotalsAndDates()
{
    addPayment(QDate(2024, 1, 5), 1000);
    addPayment(QDate(), 250);
    addPayment(QDate(2024, 1, 9), -75);
    const QModelIndex account = m_model->index(1, Model::BankAccountColumn);
    QCOMPARE(account.data(Qt::EditRole).toInt(), -1);
    QVERIFY(m_model->setData(account, m_accountIds.at(1)));
    QCOMPARE(account.data().toString(), QStringLiteral("Säästötili"));
    // An id that no account has is refused; -1 means no account.
    QVERIFY(!m_model->setData(account, m_accountIds.at(1) + 100));
    QCOMPARE(m_model->paymentAt(1)->bankAccountId, m_accountIds.at(1));

    QCOMPARE(m_model->totalAmount(), 1175LL);
    QCOMPARE(m_model->emptyDate(), 1);
    QVERIFY(m_model->setData(m_model->index(1, 0), QStringLiteral("7.1.2024")));
    QCOMPARE(m_model->emptyDate(), -1);
    QCOMPARE(m_model->index(1, 0).data().toString(), QStringLiteral("7.1.2024"));
    QVERIFY(m_model->removeRow(0) && !m_model->removeRow(2));
    QCOMPARE(m_model->totalAmount(), 175LL);
}

QTEST_MAIN(TestPaymentTableModel)
#include "tst_paymenttablemodel.moc"
