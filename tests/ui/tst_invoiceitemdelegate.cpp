#include "core/invoiceitemtablemodel.h"
#include "core/registry.h"
#include "domain/invoiceitem.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "tst_mainwindowfixture.h"
#include "ui/invoiceitemdelegate.h"

#include <QApplication>
#include <QStandardPaths>
#include <QTableView>
#include <QtTest>
#include <memory>

// The product cell of the row table, typed into with the keyboard.
class TestInvoiceItemDelegate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void productFromTypedText_data();
    void productFromTypedText();

private:
    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<InvoiceItemTableModel> m_model;
    std::unique_ptr<QTableView> m_view;
};

void TestInvoiceItemDelegate::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestInvoiceItemDelegate::init()
{
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    std::unique_ptr<Query> query(m_db->database()->query());
    for (const auto& [number, name] : { std::pair("10", "Kahvi"), { "200", "Hanasarja Oras" },
             { "210", "Hanaventtiili" }, { "300", "Suihku" } }) {
        Product product;
        product.number = QLatin1String(number);
        product.name = QLatin1String(name);
        QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
    }
    m_registry = std::make_unique<Registry>();
    QVERIFY(m_registry->fetchProducts(query.get()));

    m_model = std::make_unique<InvoiceItemTableModel>(m_registry.get());
    m_model->setEditable(true);
    QVERIFY(m_model->insertRow(0));
    m_view = std::make_unique<QTableView>();
    m_view->setModel(m_model.get());
    m_view->setItemDelegate(new InvoiceItemDelegate(m_registry.get(), m_view.get()));
    m_view->resize(800, 200);
    m_view->show();
    QApplication::setActiveWindow(m_view.get());
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
}

void TestInvoiceItemDelegate::cleanup()
{
    m_view.reset();
    m_model.reset();
    m_registry.reset();
    m_db.reset();
}

void TestInvoiceItemDelegate::productFromTypedText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("keys"); // pressed after the text
    QTest::addColumn<QString>("product"); // the row's product number afterwards

    const int enter = Qt::Key_Return;
    const int down = Qt::Key_Down;
    QTest::addRow("part of one name") << "hanas" << QList<int> { enter } << "200";
    QTest::addRow("part of one name, any case") << "VENT" << QList<int> { enter } << "210";
    QTest::addRow("highlighted of two") << "hana" << QList<int> { down, down, enter } << "210";
    // Two left and none highlighted: the list closes, the text stays and
    // means no product.
    QTest::addRow("two, none highlighted") << "hana" << QList<int> { enter, enter } << "";
    // "10" is also a part of "210 Hanaventtiili"; the number itself wins.
    QTest::addRow("product number") << "10" << QList<int> { enter, enter } << "10";
    QTest::addRow("no match") << "kahvia" << QList<int> { enter } << "";
}

void TestInvoiceItemDelegate::productFromTypedText()
{
    QFETCH(QString, text);
    QFETCH(QList<int>, keys);
    QFETCH(QString, product);

    m_view->setFocus();
    m_view->setCurrentIndex(m_model->index(0, InvoiceItemTableModel::ProductColumn));
    ::keys(text);
    QVERIFY(editing(m_view.get()));
    for (int key : keys) {
        QVERIFY(editing(m_view.get()));
        press(key);
    }
    QTRY_VERIFY(!editing(m_view.get()));
    QCOMPARE(m_model->invoiceItemAt(0)->productNumber, product);
}

QTEST_MAIN(TestInvoiceItemDelegate)
#include "tst_invoiceitemdelegate.moc"
