#include "expected.h"
#include "invoicefixture.h"
#include "pdftools.h"

#include <QtTest>
#include <cmath>

// The default invoice layout rendered to PDF and read back with poppler.
class TestInvoiceScript : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void types_data();
    void types();
    void barcode_data();
    void barcode();
    void qrCode_data();
    void qrCode();
    void manyRowsBreakPages();
    void languages_data();
    void languages();

private:
    // Prints a new invoice of these rows; the file name, empty on failure.
    QString print(
        const QList<InvoiceItem>& items, int number, int printType = 0, int storedType = 0);

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
};

using Expected::euros;

void TestInvoiceScript::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
}

QString TestInvoiceScript::print(
    const QList<InvoiceItem>& items, int number, int printType, int storedType)
{
    const int id = m_fixture.addInvoice(storedType, items, number);
    const QString file = m_dir.filePath(QStringLiteral("lasku-%1.pdf").arg(number));
    if (id < 0 || !m_fixture.printInvoice(id, file, printType)) {
        qWarning() << m_fixture.lastError();
        return QString();
    }
    return file;
}

void TestInvoiceScript::types_data()
{
    QTest::addColumn<int>("storedType");
    QTest::addColumn<int>("printType");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("payable");
    QTest::addColumn<QString>("dueText");
    QTest::addColumn<QString>("formAmount");

    const QString total = euros(Expected::total(InvoiceFixture::sampleItems()));
    QTest::addRow("invoice") << 0 << 0 << "LASKU" << true << "15.3.2025" << total;
    QTest::addRow("interest invoice") << 1 << 0 << "KORKOLASKU" << true << "15.3.2025" << total;
    QTest::addRow("credit note") << 2 << 0 << "HYVITYSLASKU" << true << "15.3.2025" << total;
    // The due date has passed long ago: pay at once.
    QTest::addRow("reminder") << 0 << 3 << "MAKSUMUISTUTUS" << true << "HETI" << total;
    QTest::addRow("receipt") << 0 << 4 << "KUITTI" << true << "15.3.2025"
                             << "MAKSETTU";
    QTest::addRow("delivery note") << 3 << 0 << "LÄHETE" << false << ""
                                   << "";
}

void TestInvoiceScript::types()
{
    QFETCH(int, storedType);
    QFETCH(int, printType);
    QFETCH(QString, title);
    QFETCH(bool, payable);
    QFETCH(QString, dueText);
    QFETCH(QString, formAmount);

    const int number = 1100 + storedType * 10 + printType;
    const QString total = euros(Expected::total(InvoiceFixture::sampleItems()));
    const QString file = print(InvoiceFixture::sampleItems(), number, printType, storedType);
    QVERIFY(!file.isEmpty());
    QCOMPARE(PdfTools::pageCount(file), 1);

    const QString text = PdfTools::text(file);
    QVERIFY2(text.contains(title), qPrintable(text));
    QVERIFY(text.contains(QString::number(number)));
    QVERIFY(text.contains("Teollisuustie 4") && text.contains("Graafinen suunnittelu"));
    // The seller's first visible account is in the footer of every document.
    QVERIFY(text.contains(QStringLiteral("FI34 5720 0020 0865 97")));
    QCOMPARE(text.contains(QStringLiteral("TILISIIRTO")), payable);
    if (payable) {
        // The second visible account is on the form, the hidden one nowhere.
        for (const QString& part : { Expected::groupedReference(m_fixture.referenceNumber(number)),
                 dueText, formAmount, total, QStringLiteral("FI52 1144 3500 0617 25") })
            QVERIFY2(text.contains(part), qPrintable(part + " missing from:\n" + text));
        QVERIFY(!text.contains(QStringLiteral("FI15 4006")));
    } else {
        QVERIFY(!text.contains(total));
    }
}

void TestInvoiceScript::barcode_data()
{
    QTest::addColumn<bool>("visible");
    QTest::addColumn<int>("printType");
    QTest::addColumn<bool>("bars");
    QTest::addRow("invoice") << true << 0 << true;
    QTest::addRow("barcode switched off") << false << 0 << false;
    QTest::addRow("delivery note") << true << 5 << false;
}

void TestInvoiceScript::barcode()
{
    QFETCH(bool, visible);
    QFETCH(int, printType);
    QFETCH(bool, bars);
    QVERIFY(m_fixture.setSetting("invoiceForm/barcodeVisible", visible ? "true" : "false"));
    const QString file = print(InvoiceFixture::sampleItems(), 1200 + printType, printType);
    QVERIFY(m_fixture.setSetting("invoiceForm/barcodeVisible", "true"));
    QVERIFY(!file.isEmpty());

    // The barcode stands at 20..115 mm, 262..274 mm from the top of the page.
    const int dpi = 300;
    const QImage page = PdfTools::renderPage(file, 1, dpi);
    QVERIFY(!page.isNull());
    auto px = [dpi](double mm) { return int(std::lround(mm / 25.4 * dpi)); };
    int transitions = 0;
    int dark = 0;
    for (int row = px(264); row <= px(272); row += px(2)) {
        bool previousDark = false;
        int rowTransitions = 0;
        for (int x = px(20); x < px(115); ++x) {
            const bool isDark = qGray(page.pixel(x, row)) < 128;
            dark += isDark;
            if (isDark != previousDark)
                ++rowTransitions;
            previousDark = isDark;
        }
        transitions = qMax(transitions, rowTransitions);
    }
    if (bars) {
        // 54 digits: start, 27 pairs and check of three bars each, and stop
        // of four bars; every bar has two edges.
        QCOMPARE(transitions, 2 * (3 * 29 + 4));
    } else {
        QCOMPARE(dark, 0);
    }
}

void TestInvoiceScript::qrCode_data()
{
    QTest::addColumn<int>("storedType");
    QTest::addColumn<int>("printType");
    QTest::addColumn<int>("paid"); // cents
    QTest::addColumn<QString>("reference"); // empty: the fixture's national reference
    QTest::addColumn<QString>("setting"); // invoiceForm/qrCode, empty: not stored
    QTest::addColumn<int>("accounts"); // visible bank accounts
    QTest::addColumn<bool>("present");

    const int total = int(Expected::total(InvoiceFixture::sampleItems()));
    const QString rf = QStringLiteral("RF18539007547034");
    QTest::addRow("invoice") << 0 << 0 << 0 << ""
                             << "" << 2 << true;
    QTest::addRow("part paid: the balance") << 0 << 0 << 12345 << ""
                                            << "true" << 2 << true;
    QTest::addRow("RF reference") << 0 << 0 << 0 << rf << "" << 2 << true;
    QTest::addRow("interest invoice") << 1 << 0 << 0 << ""
                                      << "" << 2 << true;
    QTest::addRow("reminder") << 0 << 3 << 0 << ""
                              << "" << 2 << true;
    QTest::addRow("credit note") << 2 << 0 << 0 << ""
                                 << "" << 2 << false;
    QTest::addRow("receipt") << 0 << 4 << 0 << ""
                             << "" << 2 << false;
    QTest::addRow("delivery note") << 0 << 5 << 0 << ""
                                   << "" << 2 << false;
    QTest::addRow("paid in full") << 0 << 0 << total << ""
                                  << "" << 2 << false;
    QTest::addRow("overpaid") << 0 << 0 << total + 100 << ""
                              << "" << 2 << false;
    QTest::addRow("switched off") << 0 << 0 << 0 << ""
                                  << "false" << 2 << false;
    QTest::addRow("no bank account") << 0 << 0 << 0 << ""
                                     << "" << 0 << false;
}

void TestInvoiceScript::qrCode()
{
    QFETCH(int, storedType);
    QFETCH(int, printType);
    QFETCH(int, paid);
    QFETCH(QString, reference);
    QFETCH(QString, setting);
    QFETCH(int, accounts);
    QFETCH(bool, present);

    static int number = 1400;
    ++number;
    const QList<InvoiceItem> items = InvoiceFixture::sampleItems();
    const int id = m_fixture.addInvoice(storedType, items, number, 0, paid, reference);
    QVERIFY(id >= 0);
    QVERIFY(m_fixture.setSetting("invoiceForm/qrCode", setting.isEmpty() ? QVariant() : setting));
    QVERIFY(m_fixture.showBankAccounts(accounts));
    const QString file = m_dir.filePath(QStringLiteral("qr-%1.pdf").arg(number));
    const bool printed = m_fixture.printInvoice(id, file, printType);
    QVERIFY(m_fixture.setSetting("invoiceForm/qrCode", QVariant()));
    QVERIFY(m_fixture.showBankAccounts(2));
    QVERIFY2(printed, qPrintable(m_fixture.lastError()));

    const QStringList codes = PdfTools::qrCodes(file, 1, 300);
    if (!present) {
        QCOMPARE(codes, QStringList());
        return;
    }
    QCOMPARE(codes.size(), 1);
    // The payment goes to the first visible account, for what is still open.
    const QString amount = Expected::plainEuros(Expected::total(items) - paid).replace(',', '.');
    const bool rf = !reference.isEmpty();
    const QString national = m_fixture.referenceNumber(number);
    const QStringList expected { "BCD", "002", "1", "SCT", "OKOYFIHH", "Kuusela Design Oy",
        "FI3457200020086597", "EUR" + amount, "", rf ? reference : "", rf ? "" : national };
    QStringList lines = codes.first().split('\n');
    while (rf && lines.size() < expected.size())
        lines.append(QString()); // trailing empty fields may be left out
    QCOMPARE(lines, expected);
}

void TestInvoiceScript::manyRowsBreakPages()
{
    const int rows = 60;
    const QString file = print(InvoiceFixture::manyItems(rows), 1300);
    const int pages = PdfTools::pageCount(file);
    QVERIFY2(pages > 1, qPrintable(QString::number(pages)));
    const QString totalText = euros(Expected::total(InvoiceFixture::manyItems(rows)));
    QStringList seen;
    for (int page = 1; page <= pages; ++page) {
        const QString text = PdfTools::text(file, page);
        const bool last = page == pages;
        QVERIFY2(
            text.contains(QStringLiteral("Sivu %1 (%2)").arg(page).arg(pages)), qPrintable(text));
        QCOMPARE(text.contains(totalText), last);
        QCOMPARE(text.contains(QStringLiteral("TILISIIRTO")), last);
        QCOMPARE(text.contains(QStringLiteral("Jatkuu seuraavalla sivulla")), !last);
        QVERIFY(text.contains(QStringLiteral("Rautakauppa Virtanen Oy"))); // on every page
        const QRegularExpression step(QStringLiteral("Työvaihe (\\d+)"));
        for (auto it = step.globalMatch(text); it.hasNext();)
            seen.append(it.next().captured(1));
    }
    // Every row is printed exactly once across the page breaks.
    const int printed = seen.size();
    seen.removeDuplicates();
    QCOMPARE(QList<int>({ printed, int(seen.size()) }), QList<int>({ rows, rows }));
}

void TestInvoiceScript::languages_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("customer");
    QTest::addColumn<QString>("language"); // the company's invoice language
    QTest::addColumn<QStringList>("headings");
    QTest::addRow("Finnish") << 1401 << 0 << ""
                             << QStringList { "Tuote", "Määrä", "à-hinta", "Ale %", "Veroton",
                                    "ALV %", "ALV", "Yhteensä" };
    QTest::addRow("English") << 1402 << 0 << "en"
                             << QStringList { "Product", "Quantity", "Unit price", "Discount %",
                                    "VAT excl.", "VAT %", "VAT", "Total" };
    QTest::addRow("Swedish, the customer's language")
        << 1403 << 1 << ""
        << QStringList { "Produkt", "Antal", "À-pris", "Rabatt %", "Exkl. moms", "Moms %", "Moms",
               "Totalt" };
}

// Every heading of the rows table and a long reference are printed whole, wrapped if need be, no
// two headings run into each other, and the seller's address is as large as the seller's name.
void TestInvoiceScript::languages()
{
    QFETCH(int, number);
    QFETCH(int, customer);
    QFETCH(QString, language);
    QFETCH(QStringList, headings);
    const QString reference = QStringLiteral("Isännöitsijä Kari Koskinen");
    const int id = m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), number, customer);
    QVERIFY(id > 0
        && m_fixture.testDatabase()->exec(
            { QStringLiteral("UPDATE invoice SET buyer_ref = '%1' WHERE id = %2")
                    .arg(reference)
                    .arg(id) }));
    QVERIFY(m_fixture.setSetting("invoiceForm/language", language));
    const QString file = m_dir.filePath(QStringLiteral("kieli-%1.pdf").arg(number));
    const bool printed = m_fixture.printInvoice(id, file);
    QVERIFY(m_fixture.setSetting("invoiceForm/language", QString()) && printed);

    const QList<PdfTools::Word> words = PdfTools::pages(file).value(0).words;
    const QStringList texts = PdfTools::texts(words);
    int from = 0;
    for (const QString& part : reference.split(' ')) {
        from = texts.indexOf(part, from);
        QVERIFY2(from >= 0, qPrintable(part + " missing from: " + texts.join(' ')));
    }
    // The address block and the headings stand above the footer and the form that repeat words.
    auto topmost = [&words](const QString& text) {
        QRectF box;
        for (const PdfTools::Word& word : words) {
            if (word.text == text && (box.isNull() || word.box.top() < box.top()))
                box = word.box;
        }
        return box;
    };
    const double nameHeight = topmost(QStringLiteral("Kuusela")).height();
    for (const QString& part : QStringList { "Hämeenkatu", "33100", "Tampere" })
        QVERIFY2(qAbs(topmost(part).height() - nameHeight) < 0.05 * nameHeight, qPrintable(part));

    // The heading lines: from the first heading down by two lines of text.
    const QRectF first = topmost(headings.first());
    QList<PdfTools::Word> band;
    QStringList missing = headings.join(' ').split(' ');
    for (const PdfTools::Word& word : words) {
        if (word.box.top() >= first.top() - first.height() / 2
            && word.box.top() < first.top() + 2 * first.height()) {
            for (const PdfTools::Word& other : band)
                QVERIFY2(!word.box.intersects(other.box),
                    qPrintable(word.text + " runs into " + other.text));
            band.append(word);
            missing.removeOne(word.text);
        }
    }
    QVERIFY2(missing.isEmpty(), qPrintable(missing.join(' ') + " missing"));
}

QTEST_MAIN(TestInvoiceScript)
#include "tst_invoicescript.moc"
