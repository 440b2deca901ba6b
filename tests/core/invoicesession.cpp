#include "invoicesession.h"

#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"

const QDate InvoiceSession::today(2024, 6, 10);

InvoiceSession::InvoiceSession(TestDatabase::Backend backend) : m_db(backend) { }

InvoiceSession::~InvoiceSession()
{
    close();
}

bool InvoiceSession::open()
{
    close();
    if (!m_db.database() && !m_db.open()) {
        m_lastError = m_db.lastError();
        return false;
    }
    QVariantMap entry = m_db.entry();
    entry.insert(QStringLiteral("number"), 1);
    m_db.close();

    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_dir.filePath(QStringLiteral("veklari.ini")));
    TestDatabase::writeEntries(m_registry->appSettings(), { entry });
    m_registry->setDatabaseNumber(1);
    m_model = std::make_unique<MainModel>(m_registry.get());
    m_model->setToday(today);
    if (m_model->openDatabase(0, false) != 0 || !m_model->fetchData()) {
        m_lastError = m_model->lastError();
        return false;
    }
    if (m_customerId >= 0)
        return true;

    std::unique_ptr<Query> query(m_registry->database()->query());
    // 24.80 with VAT and 10.00 without.
    for (const auto& [number, amount, vatRate] :
        { std::tuple("101", 248000, 2400), std::tuple("202", 100000, 2550) }) {
        Product product;
        product.number = QLatin1String(number);
        product.amount = amount;
        product.vatRate = vatRate;
        product.vatExcluded = vatRate == 2550;
        if (!query->saveProduct(&product)) {
            m_lastError = query->lastError();
            return false;
        }
    }
    Customer customer;
    customer.number = 1;
    customer.name = QStringLiteral("Asiakas Oy");
    if (!query->saveCustomer(&customer) || !m_registry->fetchProducts(query.get())
        || !m_registry->fetchCustomers(query.get())) {
        m_lastError = query->lastError();
        return false;
    }
    m_customerId = customer.id;
    return true;
}

void InvoiceSession::close()
{
    m_model.reset();
    m_registry.reset();
}

bool InvoiceSession::editRow(int row, const Cells& cells)
{
    InvoiceItemTableModel* rows = m_model->invoiceItemTableModel();
    if (row >= rows->rowCount() && !rows->insertRow(row))
        return false;
    for (const auto& [column, text] : cells) {
        if (!rows->setData(rows->index(row, column), text)) {
            m_lastError = QStringLiteral("row %1 refused %2").arg(row).arg(text);
            return false;
        }
    }
    return true;
}

bool InvoiceSession::startInvoice()
{
    using M = InvoiceItemTableModel;
    if (m_model->createInvoice() < 0) {
        m_lastError = m_model->lastError();
        return false;
    }
    m_model->invoice()->customerId = m_customerId;
    Payment payment;
    payment.date = today;
    payment.amount = 1000;
    m_model->paymentTableModel()->addPayment(payment);
    return editRow(0, { { M::ProductColumn, "101" }, { M::QuantityColumn, "3" } })
        && editRow(1,
            { { M::ProductColumn, "202" }, { M::QuantityColumn, "2" },
                { M::TextColumn, "Kaapelit" } });
}
