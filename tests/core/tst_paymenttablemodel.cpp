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

namespace {

using Model = PaymentTableModel;

// Cents in the user's locale without grouping, as the editor shows them.
QString editText(long long cents)
{
    return QString::number(cents / 100) + QLocale().decimalPoint()
        + QString::number(qAbs(cents) % 100).rightJustified(2, QLatin1Char('0'));
}

} // namespace

class TestPaymentTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void headersAndFlags();
    void editing_data();
    void editing();
    void bankAccountByIdAndName();
    void totalsAndMissingDates();
    void saveReloadAndRemove_data();
    void saveReloadAndRemove();

private:
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<Model> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    QList<int> m_accountIds;
};

void TestPaymentTableModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    for (const char* name : { "Käyttötili", "Säästötili" }) {
        BankAccount account;
        account.name = QString::fromUtf8(name);
        account.iban = QStringLiteral("FI2112345600000785");
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

void TestPaymentTableModel::headersAndFlags()
{
    QCOMPARE(m_model->columnCount(), 3);
    QCOMPARE(m_model->headerData(0, Qt::Horizontal).toString(), QStringLiteral("Päivämäärä"));
    QCOMPARE(m_model->headerData(1, Qt::Horizontal).toString(), QStringLiteral("Summa"));
    QCOMPARE(m_model->headerData(2, Qt::Horizontal).toString(), QStringLiteral("Pankkitili"));

    QVERIFY(m_model->insertRow(0));
    QVERIFY(m_model->isChanged());
    QCOMPARE(m_model->index(0, Model::AmountColumn).data(Qt::TextAlignmentRole).toInt(),
        int(Qt::AlignRight | Qt::AlignVCenter));
    for (int column = 0; column < 3; ++column)
        QVERIFY(m_model->index(0, column).flags() & Qt::ItemIsEditable);
    m_model->setEditable(false);
    for (int column = 0; column < 3; ++column) {
        QVERIFY(!(m_model->index(0, column).flags() & Qt::ItemIsEditable));
        QVERIFY(!m_model->setData(m_model->index(0, column), QStringLiteral("1")));
    }
}

void TestPaymentTableModel::editing_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QDate>("date");
    QTest::addColumn<int>("amount");
    auto row = [](const char* name, int column, const QString& value, bool accepted,
                   const QDate& date, int amount) {
        QTest::addRow("%s", name) << column << QVariant(value) << accepted << date << amount;
    };
    const QDate start(2024, 2, 1);
    row("date", 0, "15.3.2024", true, QDate(2024, 3, 15), 5000);
    row("date as digits", 0, "15032024", true, QDate(2024, 3, 15), 5000);
    row("impossible date", 0, "31.2.2024", false, start, 5000);
    row("date cleared", 0, QString(), true, QDate(), 5000);
    row("same date", 0, "1.2.2024", false, start, 5000);
    row("amount", 1, " 1234.5 ", true, start, 123450);
    row("negative amount", 1, "-20", true, start, -2000);
    row("amount text", 1, "abc", false, start, 5000);
    row("same amount", 1, "50", false, start, 5000);
}

void TestPaymentTableModel::editing()
{
    QFETCH(int, column);
    QFETCH(QVariant, value);
    QFETCH(bool, accepted);
    QFETCH(QDate, date);
    QFETCH(int, amount);

    Payment payment;
    payment.id = 12; // a copy is always a new payment
    payment.date = QDate(2024, 2, 1);
    payment.amount = 5000;
    QCOMPARE(m_model->addPayment(payment), 0);
    QCOMPARE(m_model->paymentAt(0)->id, -1);
    m_model->committed();

    QSignalSpy spy(m_model.get(), &QAbstractItemModel::dataChanged);
    QCOMPARE(m_model->setData(m_model->index(0, column), value), accepted);
    QCOMPARE(m_model->paymentAt(0)->date, date);
    QCOMPARE(m_model->paymentAt(0)->amount, amount);
    QCOMPARE(m_model->isChanged(), accepted);
    QCOMPARE(spy.count(), accepted ? 1 : 0);
    QCOMPARE(
        m_model->index(0, Model::AmountColumn).data(Qt::EditRole).toString(), editText(amount));
}

void TestPaymentTableModel::bankAccountByIdAndName()
{
    QVERIFY(m_model->insertRow(0));
    const QModelIndex index = m_model->index(0, Model::BankAccountColumn);
    QCOMPARE(index.data().toString(), QString());
    QCOMPARE(index.data(Qt::EditRole).toInt(), -1);
    QVERIFY(m_model->setData(index, m_accountIds.at(1)));
    QCOMPARE(index.data().toString(), QStringLiteral("Säästötili"));
    QCOMPARE(index.data(Qt::EditRole).toInt(), m_accountIds.at(1));
    // An id that no account has is refused; -1 means no account.
    QVERIFY(!m_model->setData(index, m_accountIds.at(1) + 100));
    QCOMPARE(m_model->paymentAt(0)->bankAccountId, m_accountIds.at(1));
    QVERIFY(m_model->setData(index, -1));
    QCOMPARE(m_model->paymentAt(0)->bankAccountId, -1);
}

void TestPaymentTableModel::totalsAndMissingDates()
{
    const QList<QPair<QDate, int>> payments
        = { { QDate(2024, 1, 5), 1000 }, { QDate(), 250 }, { QDate(2024, 1, 9), -75 } };
    for (const auto& pair : payments) {
        Payment payment;
        payment.date = pair.first;
        payment.amount = pair.second;
        m_model->addPayment(payment);
    }
    QCOMPARE(m_model->totalAmount(), 1175LL);
    QCOMPARE(m_model->emptyDate(), 1);
    QVERIFY(m_model->setData(m_model->index(1, 0), QStringLiteral("7.1.2024")));
    QCOMPARE(m_model->emptyDate(), -1);
    QCOMPARE(m_model->index(1, 0).data().toString(), QStringLiteral("7.1.2024"));
    QVERIFY(m_model->removeRow(0));
    QVERIFY(!m_model->removeRow(2));
    QCOMPARE(m_model->totalAmount(), 175LL);
}

void TestPaymentTableModel::saveReloadAndRemove_data()
{
    QTest::addColumn<int>("backend");
    QTest::addRow("SQLite") << int(TestDatabase::SQLite);
    QTest::addRow("PostgreSQL") << int(TestDatabase::PostgreSQL);
}

void TestPaymentTableModel::saveReloadAndRemove()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    Customer customer;
    customer.number = 1;
    customer.name = QStringLiteral("Maksaja Oy");
    QVERIFY2(query->saveCustomer(&customer), qPrintable(query->lastError()));
    BankAccount account;
    account.name = QStringLiteral("Tili");
    QVERIFY(query->saveBankAccount(&account));
    QVERIFY(m_registry->fetchBankAccounts(query.get()));
    Invoice invoice;
    invoice.customerId = customer.id;
    invoice.number = 1;
    invoice.date = QDate(2024, 1, 2);
    invoice.dueDate = invoice.date;
    QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));

    for (int i = 0; i < 3; ++i) {
        Payment payment;
        payment.date = QDate(2024, 2, 3 - i);
        payment.amount = 100 * (i + 1);
        payment.bankAccountId = i == 1 ? account.id : -1;
        m_model->addPayment(payment);
    }
    QVERIFY(m_model->savePayments(query.get(), invoice.id));
    m_model->committed();
    QVERIFY(!m_model->isChanged());
    const QString sumSql
        = QStringLiteral("SELECT sum(amount) FROM payment WHERE invoice_id = %1").arg(invoice.id);
    QCOMPARE(db.value(sumSql).toInt(), 600);

    Model loaded(m_registry.get());
    QVERIFY2(loaded.loadPayments(query.get(), invoice.id), qPrintable(query->lastError()));
    QCOMPARE(loaded.rowCount(), 3);
    // Ordered by date.
    QCOMPARE(loaded.paymentAt(0)->date, QDate(2024, 2, 1));
    QCOMPARE(loaded.paymentAt(0)->amount, 300);
    QCOMPARE(loaded.paymentAt(1)->bankAccountId, account.id);
    QCOMPARE(loaded.paymentAt(2)->bankAccountId, -1);
    QCOMPARE(loaded.totalAmount(), 600LL);

    // Nothing changed: saving writes nothing, even over changes made elsewhere.
    QVERIFY(db.exec(
        { QStringLiteral("UPDATE payment SET amount = 1 WHERE invoice_id = %1").arg(invoice.id) }));
    QVERIFY(loaded.savePayments(query.get(), invoice.id));
    QCOMPARE(db.value(sumSql).toInt(), 3);

    // A saved payment removed, a new one added and removed again.
    loaded.setEditable(true);
    QVERIFY(loaded.removeRow(0));
    QVERIFY(loaded.insertRow(2));
    QVERIFY(loaded.removeRow(2));
    QVERIFY(loaded.setData(loaded.index(1, Model::AmountColumn), QStringLiteral("7")));
    QVERIFY(loaded.savePayments(query.get(), invoice.id));
    loaded.committed();
    QCOMPARE(
        db.value(
              QStringLiteral("SELECT count(*) FROM payment WHERE invoice_id = %1").arg(invoice.id))
            .toInt(),
        2);
    QCOMPARE(db.value(sumSql).toInt(), 200 + 700);

    loaded.deletePayments();
    QVERIFY(loaded.savePayments(query.get(), invoice.id));
    QCOMPARE(
        db.value(
              QStringLiteral("SELECT count(*) FROM payment WHERE invoice_id = %1").arg(invoice.id))
            .toInt(),
        0);
}

QTEST_MAIN(TestPaymentTableModel)
#include "tst_paymenttablemodel.moc"
