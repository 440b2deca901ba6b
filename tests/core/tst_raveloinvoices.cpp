#include "core/mainmodel.h"
#include "core/ravelofilereader.h"
#include "core/raveloinvoicebuilder.h"
#include "core/ravelomapping.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "storage/database.h"
#include "storage/faultinjector.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <memory>

namespace {

using Rows = QList<QPair<QString, int>>;
using B = RaveloInvoiceBuilder;

const QDate invoiceDate(2026, 12, 1);
// Hourly prices without VAT, in 1/10000 euro, and the VAT rate.
constexpr long long programmingPrice = 800000;
constexpr long long meetingPrice = 600000;
constexpr int vatRate = 2550;

QString dataPath(const QString& name)
{
    return qEnvironmentVariable("VEKLARI_TEST_DATA") + QStringLiteral("/ravelo/") + name;
}

} // namespace

class TestRaveloInvoices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void quantity_data();
    void quantity();
    void itemization_data();
    void itemization();
    void unmappedNamesAreRefused();
    void mappingPersists();
    void createInvoices_data();
    void createInvoices();
    void failedRunWritesNothing_data() { createInvoices_data(); }
    void failedRunWritesNothing();

private:
    bool openSession(TestDatabase& db);
    void addRecords();
    B::Options november() const;

    QTemporaryDir m_dir;
    int m_counter = 0;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<MainModel> m_model;
    RaveloFileReader m_reader;
    RaveloMapping m_mapping;
    int m_pajala = -1;
    int m_kumpula = -1;
};

void TestRaveloInvoices::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestRaveloInvoices::init()
{
    m_reader.clear();
    QVERIFY2(
        m_reader.readDirectory(dataPath(QStringLiteral("good"))), qPrintable(m_reader.lastError()));
}

void TestRaveloInvoices::cleanup()
{
    FaultInjector::clear();
    m_model.reset();
    m_registry.reset();
}

bool TestRaveloInvoices::openSession(TestDatabase& db)
{
    m_model.reset();
    m_registry.reset();
    if (!db.database() && !db.open())
        return false;
    QVariantMap entry = db.entry();
    entry.insert(QStringLiteral("number"), 1);
    db.close();
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_dir.filePath(QStringLiteral("veklari-%1.ini").arg(++m_counter)));
    TestDatabase::writeEntries(m_registry->appSettings(), { entry });
    m_registry->setDatabaseNumber(1);
    m_model = std::make_unique<MainModel>(m_registry.get());
    m_model->setToday(invoiceDate);
    return m_model->openDatabase(0, false) == 0 && m_model->fetchData();
}

// Two customers (one with a reference number of its own), the two work
// types as products, notice texts with short codes and an earlier invoice.
void TestRaveloInvoices::addRecords()
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    for (const auto& [number, name, price] :
        { std::tuple("OHJ", "Ohjelmointityö", programmingPrice),
            std::tuple("PAL", "Palaverit", meetingPrice) }) {
        Product product;
        product.number = QLatin1String(number);
        product.name = QString::fromUtf8(name);
        product.unitCode = QStringLiteral("h");
        product.amount = price;
        product.vatRate = vatRate;
        product.vatExcluded = true;
        QVERIFY(query->saveProduct(&product));
    }
    for (const auto& [number, name, reference] :
        { std::tuple(7, "Pajala Oy", "12345672"), std::tuple(8, "Kumpulan Puutarha", "") }) {
        Customer customer;
        customer.number = number;
        customer.name = QLatin1String(name);
        customer.referenceNumber = QLatin1String(reference);
        QVERIFY(query->saveCustomer(&customer));
        (number == 7 ? m_pajala : m_kumpula) = customer.id;
    }
    Invoice earlier;
    earlier.customerId = m_pajala;
    earlier.number = 41;
    earlier.date = invoiceDate.addMonths(-1);
    earlier.dueDate = earlier.date;
    QVERIFY(query->saveInvoice(&earlier));
    Settings* settings = m_registry->settings();
    settings->setProperty(SettingsKeys::noticeText1, QStringLiteral("Lasku {I6}, asiakas {C}"));
    settings->setProperty(SettingsKeys::paymentTerms, QStringLiteral("21 päivää netto"));
    settings->setProperty(SettingsKeys::interestOnArrears, 900);
    QVERIFY(query->updateSettings(settings));
    QVERIFY(m_registry->fetchProducts(query.get()) && m_registry->fetchCustomers(query.get()));

    bool found = false;
    m_mapping = RaveloMapping();
    m_mapping.setCustomerId(QStringLiteral("Pajala Oy"), m_pajala);
    m_mapping.setCustomerId(QStringLiteral("Kumpulan Puutarha"), m_kumpula);
    m_mapping.setProductId(QStringLiteral("Ohjelmointi"),
        m_registry->productByNumber(QStringLiteral("OHJ"), found)->id);
    m_mapping.setProductId(
        QStringLiteral("Palaveri"), m_registry->productByNumber(QStringLiteral("PAL"), found)->id);
}

B::Options TestRaveloInvoices::november() const
{
    B::Options options;
    options.from = QDate(2026, 11, 1);
    options.to = QDate(2026, 11, 30);
    options.customers
        = QStringList { QStringLiteral("Pajala Oy"), QStringLiteral("Kumpulan Puutarha") };
    return options;
}

void TestRaveloInvoices::quantity_data()
{
    QTest::addColumn<int>("minutes");
    QTest::addColumn<int>("step");
    QTest::addColumn<bool>("up");
    QTest::addColumn<long long>("quantity");
    QTest::addRow("20 min exactly") << 20 << 0 << true << 3333LL;
    QTest::addRow("40 min exactly") << 40 << 0 << true << 6667LL;
    QTest::addRow("1 min up to 15") << 1 << 15 << true << 2500LL;
    QTest::addRow("7 min to the nearest 15") << 7 << 15 << false << 0LL;
    QTest::addRow("8 min to the nearest 15") << 8 << 15 << false << 2500LL;
    QTest::addRow("half of 30 goes up") << 45 << 30 << false << 10000LL;
    QTest::addRow("a whole step stays") << 90 << 30 << true << 15000LL;
    QTest::addRow("nothing") << 0 << 30 << true << 0LL;
}

void TestRaveloInvoices::quantity()
{
    QFETCH(int, minutes);
    QFETCH(int, step);
    QFETCH(bool, up);
    QTEST(B::quantity(minutes, step, up), "quantity");
}

void TestRaveloInvoices::itemization_data()
{
    QTest::addColumn<int>("itemization");
    QTest::addColumn<int>("step");
    QTest::addColumn<bool>("up");
    // Row texts and the minutes of work behind each, summed by hand from
    // the November file.
    QTest::addColumn<Rows>("pajala");
    QTest::addColumn<Rows>("kumpula");

    QTest::addRow("not itemised, exact")
        << int(B::NoItemization) << 0 << true
        << Rows { { QStringLiteral("Ohjelmointi 2.11.2026–30.11.2026"), 535 },
               { QStringLiteral("Palaveri 3.11.2026"), 70 } }
        << Rows { { QStringLiteral("Ohjelmointi 3.11.2026"), 260 },
               { QStringLiteral("Palaveri 17.11.2026"), 20 } };
    QTest::addRow("monthly, up to 30 min") << int(B::Monthly) << 30 << true
                                           << Rows { { QStringLiteral("Ohjelmointi 11/2026"), 535 },
                                                  { QStringLiteral("Palaveri 11/2026"), 70 } }
                                           << Rows { { QStringLiteral("Ohjelmointi 11/2026"), 260 },
                                                  { QStringLiteral("Palaveri 11/2026"), 20 } };
    QTest::addRow("daily, nearest 15 min")
        << int(B::Daily) << 15 << false
        << Rows { { QStringLiteral("Ohjelmointi 2.11.2026"), 420 },
               { QStringLiteral("Palaveri 3.11.2026"), 70 },
               { QStringLiteral("Ohjelmointi 30.11.2026"), 115 } }
        << Rows { { QStringLiteral("Ohjelmointi 3.11.2026"), 260 },
               { QStringLiteral("Palaveri 17.11.2026"), 20 } };
    QTest::addRow("entry by entry, up to 30 min")
        << int(B::EntryByEntry) << 30 << true
        << Rows { { QStringLiteral("2.11.2026 8:30–11:45 Tilausnäkymä"), 195 },
               { QStringLiteral("2.11.2026 12:15–16:00 Tilausnäkymä, testit"), 225 },
               { QStringLiteral("3.11.2026 9:00–10:10 Viikkopalaveri"), 70 },
               { QStringLiteral("30.11.2026 15:05–17:00 Kuukauden viimeinen"), 115 } }
        << Rows { { QStringLiteral("3.11.2026 10:30–14:50 Raporttipohja"), 260 },
               { QStringLiteral("17.11.2026 13:00–13:20 Palaveri"), 20 } };
}

void TestRaveloInvoices::itemization()
{
    QFETCH(int, itemization);
    QFETCH(int, step);
    QFETCH(bool, up);
    QFETCH(Rows, pajala);
    QFETCH(Rows, kumpula);
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addRecords();

    B::Options options = november();
    options.itemization = itemization;
    options.roundingStep = step;
    options.roundUp = up;
    B builder(m_registry.get());
    QVERIFY2(
        builder.build(m_reader.entries(), m_mapping, options), qPrintable(builder.lastError()));
    // In the order of the customers' numbers.
    QCOMPARE(builder.invoices().size(), 2);
    for (const auto& [invoice, rows] : { std::pair(builder.invoices().at(0), pajala),
             std::pair(builder.invoices().at(1), kumpula) }) {
        QCOMPARE(invoice.customerId, rows == pajala ? m_pajala : m_kumpula);
        QCOMPARE(invoice.items.size(), rows.size());
        long long cents = 0;
        for (int i = 0; i < rows.size(); ++i) {
            const InvoiceItem& item = invoice.items.at(i);
            QCOMPARE(item.text, rows.at(i).first);
            const long long hours = B::quantity(rows.at(i).second, step, up);
            QCOMPARE(item.quantity, hours);
            // Cents of the hourly price, the row with VAT in 1/10^8 cent, half
            // a cent up.
            const long long priceCents
                = (item.productNumber == QLatin1String("OHJ") ? programmingPrice : meetingPrice)
                / 100;
            const long long exact = hours * priceCents * (10000 + vatRate);
            cents += (exact + 50000000) / 100000000;
            QCOMPARE(item.unitCode, QStringLiteral("h"));
        }
        QCOMPARE(invoice.totalAmount(), cents);
    }
}

void TestRaveloInvoices::unmappedNamesAreRefused()
{
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY(openSession(db));
    addRecords();
    m_mapping.setCustomerId(QStringLiteral("Kumpulan Puutarha"), -1);
    m_mapping.setProductId(QStringLiteral("Palaveri"), 999999);
    B builder(m_registry.get());
    QVERIFY(!builder.build(m_reader.entries(), m_mapping, november()));
    QCOMPARE(builder.lastError(),
        QStringLiteral("Työlajia \"Palaveri\" ei ole yhdistetty tuotteeseen.\n"
                       "Ravelon asiakasta \"Kumpulan Puutarha\" ei ole yhdistetty asiakkaaseen."));
    QVERIFY(builder.invoices().isEmpty());
}

void TestRaveloInvoices::mappingPersists()
{
    Settings settings;
    settings.setProperty(SettingsKeys::paymentTerms, QStringLiteral("7 pv"));
    RaveloMapping mapping;
    // Names with the characters of the settings text itself.
    mapping.setCustomerId(QStringLiteral("A=B \\ Oy\nrivi"), 3);
    mapping.setCustomerId(QStringLiteral("Pois"), 4);
    mapping.setCustomerId(QStringLiteral("Pois"), -1);
    mapping.setProductId(QStringLiteral("Työ"), 12);
    mapping.save(&settings);

    Settings stored;
    stored.propertiesFromString(settings.propertiesToString());
    RaveloMapping loaded;
    loaded.load(stored);
    QCOMPARE(loaded.customers(), QStringList { QStringLiteral("A=B \\ Oy\nrivi") });
    QCOMPARE(loaded.customerId(QStringLiteral("A=B \\ Oy\nrivi")), 3);
    QCOMPARE(loaded.customerId(QStringLiteral("Pois")), -1);
    QCOMPARE(loaded.productId(QStringLiteral("Työ")), 12);
    QCOMPARE(stored.property(SettingsKeys::paymentTerms).toString(), QStringLiteral("7 pv"));

    // Saving a smaller mapping leaves nothing of the larger one behind.
    loaded.setCustomerId(QStringLiteral("A=B \\ Oy\nrivi"), -1);
    loaded.save(&stored);
    RaveloMapping again;
    again.load(stored);
    QVERIFY(again.customers().isEmpty());
    QCOMPARE(again.workTypes(), QStringList { QStringLiteral("Työ") });
}

void TestRaveloInvoices::createInvoices_data()
{
    QTest::addColumn<int>("backend");
    QTest::addRow("SQLite") << int(TestDatabase::SQLite);
    QTest::addRow("PostgreSQL") << int(TestDatabase::PostgreSQL);
}

void TestRaveloInvoices::createInvoices()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY(openSession(db));
    addRecords();
    B::Options options = november();
    options.from = QDate(2026, 10, 1);
    options.roundingStep = 15;

    B builder(m_registry.get());
    QVERIFY(builder.fetchBilledEntries());
    QVERIFY(builder.billedEntries().isEmpty());
    QVERIFY2(
        builder.build(m_reader.entries(), m_mapping, options), qPrintable(builder.lastError()));
    QCOMPARE(builder.invoices().size(), 2);
    const QList<B::PlannedInvoice> planned = builder.invoices();
    Settings settings;
    m_registry->settings()->copy(&settings);
    m_mapping.save(&settings);
    QVERIFY2(builder.save(invoiceDate, &settings), qPrintable(builder.lastError()));
    QCOMPARE(builder.savedNumbers(), QList<int>({ 42, 43 }));

    // What a new invoice of the window gets for the same customer.
    QVERIFY(m_model->fetchData());
    QVERIFY(m_model->createInvoice() >= 0);
    m_model->invoice()->customerId = m_kumpula;
    m_model->updateReferenceNumber();
    const Invoice windowInvoice = *m_model->invoice();

    QCOMPARE(m_model->invoiceCount(), 3);
    QList<Invoice> stored;
    for (int row = 1; row < 3; ++row) {
        QVERIFY(m_model->goToInvoice(row));
        stored.append(*m_model->invoice());
    }
    // The same rules as the window's, numbers included: 42 is the next one
    // again, because nothing was stored for the window's new invoice.
    const Invoice& kumpula = stored.at(1);
    QCOMPARE(kumpula.customerId, m_kumpula);
    QCOMPARE(kumpula.date, invoiceDate);
    QCOMPARE(kumpula.dueDate, invoiceDate.addDays(21));
    QCOMPARE(kumpula.paymentTerms, windowInvoice.paymentTerms);
    QCOMPARE(kumpula.interestOnArrears, 900);
    QCOMPARE(kumpula.property("t1").toString(), QStringLiteral("Lasku 000043, asiakas 8"));
    QCOMPARE(windowInvoice.property("t1").toString(), QStringLiteral("Lasku 000044, asiakas 8"));
    QVERIFY(Invoice::isValidReferenceNumber(kumpula.referenceNumber));
    QCOMPARE(kumpula.referenceNumber, Invoice::appendCheckDigitToReferenceNumber("4300"));
    // A customer's own reference number is kept.
    QCOMPARE(stored.at(0).referenceNumber, QStringLiteral("12345672"));
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(stored.at(i).totalAmount, int(planned.at(i).totalAmount()));
        QCOMPARE(stored.at(i).balance, stored.at(i).totalAmount);
    }
    QCOMPARE(db.value(QStringLiteral("SELECT count(*) FROM invoice_item")).toInt(),
        planned.at(0).items.size() + planned.at(1).items.size());
    // October's two identical lines are two entries on the invoice.
    QCOMPARE(stored.at(0).property(B::billedEntriesKey).toString().split('\n').size(), 6);

    // The mapping came along in the same transaction.
    QVERIFY(m_model->fetchData());
    RaveloMapping remembered;
    remembered.load(*m_registry->settings());
    QCOMPARE(remembered.customerId(QStringLiteral("Kumpulan Puutarha")), m_kumpula);
    QCOMPARE(remembered.workTypes(), (QStringList { "Ohjelmointi", "Palaveri" }));

    // A second run finds nothing more to bill.
    B second(m_registry.get());
    QVERIFY(second.fetchBilledEntries());
    QCOMPARE(second.billedEntries().size(), 9);
    QVERIFY(second.build(m_reader.entries(), m_mapping, options));
    QVERIFY(second.invoices().isEmpty());
    // December's entry was outside the period and is still free.
    options.to = QDate();
    QVERIFY(second.build(m_reader.entries(), m_mapping, options));
    QCOMPARE(second.invoices().size(), 1);
    QCOMPARE(second.invoices().first().items.first().text, QStringLiteral("Ohjelmointi 1.12.2026"));

    // Removing an invoice frees its entries.
    QVERIFY(m_model->goToInvoice(2));
    QCOMPARE(m_model->invoice()->number, 43);
    QVERIFY(m_model->removeInvoice());
    QVERIFY(second.fetchBilledEntries());
    options.to = november().to;
    QVERIFY(second.build(m_reader.entries(), m_mapping, options));
    QCOMPARE(second.invoices().size(), 1);
    QCOMPARE(second.invoices().first().customerId, m_kumpula);
}

void TestRaveloInvoices::failedRunWritesNothing()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY(openSession(db));
    addRecords();
    B builder(m_registry.get());
    QVERIFY(builder.build(m_reader.entries(), m_mapping, november()));
    QCOMPARE(builder.invoices().size(), 2);
    Settings settings;
    m_registry->settings()->copy(&settings);
    m_mapping.save(&settings);
    // The last statement of the run: everything before it goes too.
    FaultInjector::failMatching(
        QRegularExpression(QStringLiteral("^UPDATE settings")), QStringLiteral("levy täynnä"));
    QVERIFY(!builder.save(invoiceDate, &settings));
    QVERIFY(!FaultInjector::isPending());
    QVERIFY(builder.lastError().contains(QStringLiteral("levy täynnä")));
    QVERIFY(builder.savedNumbers().isEmpty());
    QCOMPARE(db.value(QStringLiteral("SELECT count(*) FROM invoice")).toInt(), 1);
    QCOMPARE(db.value(QStringLiteral("SELECT count(*) FROM invoice_item")).toInt(), 0);
    QVERIFY(builder.fetchBilledEntries());
    QVERIFY(builder.billedEntries().isEmpty());
    // And the run can be made again.
    QVERIFY2(builder.save(invoiceDate, &settings), qPrintable(builder.lastError()));
    QCOMPARE(builder.savedNumbers(), QList<int>({ 42, 43 }));
}

QTEST_GUILESS_MAIN(TestRaveloInvoices)
#include "tst_raveloinvoices.moc"
