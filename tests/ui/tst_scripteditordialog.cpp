#include "core/registry.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "invoicefixture.h"
#include "pdftools.h"
#include "storage/database.h"
#include "storage/query.h"
#include "ui/scripteditordialog.h"
#include "ui/scripterrordialog.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPrintPreviewWidget>
#include <QPushButton>
#include <QtTest>
#include <memory>

// The editor with its message boxes answered by the test.
class Editor : public ScriptEditorDialog
{
public:
    using ScriptEditorDialog::ScriptEditorDialog;
    QStringList messages;
    QStringList errors;
    int questions = 0;

protected:
    void showMessage(QMessageBox::Icon, const QString& text) override { messages << text; }
    bool askQuestion(const QString&) override { return ++questions > 0; }
    void showScriptError(const QString& error) override { errors << error; }
};

class TestScriptEditorDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void changedLayoutReachesTheNextPdf();
    void testRun_data();
    void testRun();
    void saveChecksTheName_data();
    void saveChecksTheName();
    void deletingTheDefaultRestoresBuiltIn();

private:
    // The fonts of the invoice printed as the program does.
    QString printedFonts(const QString& fileName);
    template<typename T>
    static T* child(QObject* parent, const char* name)
    {
        return parent->findChild<T*>(QLatin1String(name));
    }

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
    int m_invoiceId = -1;
};

void TestScriptEditorDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_invoiceId = m_fixture.addInvoice(0, InvoiceFixture::sampleItems());
    QVERIFY(m_invoiceId > 0);
}

QString TestScriptEditorDialog::printedFonts(const QString& fileName)
{
    const QString file = m_dir.filePath(fileName);
    if (!m_fixture.printInvoice(m_invoiceId, file))
        return m_fixture.lastError();
    return QString::fromUtf8(PdfTools::run(QStringLiteral("pdffonts"), { file }));
}

void TestScriptEditorDialog::changedLayoutReachesTheNextPdf()
{
    const QString before = printedFonts(QStringLiteral("before.pdf"));
    QVERIFY2(before.contains(QStringLiteral("LiberationSans")), qPrintable(before));
    QVERIFY(!before.contains(QStringLiteral("LiberationSerif")));

    Editor editor(m_fixture.registry());
    editor.show();
    QTest::mouseClick(child<QPushButton>(&editor, "new"), Qt::LeftButton);
    auto* source = child<QPlainTextEdit>(&editor, "source");
    QString text = source->toPlainText();
    // The built-in layout is the starting point; its title gets a serif font.
    const QString titleFont = QStringLiteral("font(size, 'bold');");
    QVERIFY(text.contains(QStringLiteral("function print()")));
    QCOMPARE(text.count(titleFont), 1);
    text.replace(titleFont, QStringLiteral("setFont('Liberation Serif', size, 'bold');"));
    source->setPlainText(text);
    auto* name = child<QLineEdit>(&editor, "name");
    name->clear();
    QTest::keyClicks(name, QStringLiteral("Serif-otsikko"));
    child<QCheckBox>(&editor, "defaultInvoice")->setChecked(true);
    QVERIFY(editor.isModified());
    QTest::mouseClick(child<QPushButton>(&editor, "save"), Qt::LeftButton);
    QVERIFY2(editor.messages.isEmpty(), qPrintable(editor.messages.join('\n')));
    QVERIFY(!editor.isModified());

    // Stored with its type, listed, and chosen as the invoice layout.
    const int id = editor.currentId();
    QVERIFY(id > 0);
    QCOMPARE(child<QListWidget>(&editor, "scripts")->count(), 1);
    QCOMPARE(m_fixture.registry()->settings()->property("printScripts/invoice").toString(),
        QString::number(id));
    std::unique_ptr<Query> query(m_fixture.testDatabase()->database()->query());
    PrintScript stored;
    QVERIFY(query->fetchPrintScript(id, &stored));
    QCOMPARE(QStringList({ stored.name, stored.type, stored.sourceCode }),
        QStringList({ "Serif-otsikko", "invoice", text }));

    const QString after = printedFonts(QStringLiteral("after.pdf"));
    QVERIFY2(after.contains(QStringLiteral("LiberationSerif-Bold")), qPrintable(after));
    QVERIFY(PdfTools::text(m_dir.filePath("after.pdf")).contains(QStringLiteral("LASKU")));
}

void TestScriptEditorDialog::testRun_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("line");
    QTest::addRow("stored layout") << ""
                                   << "" << 0;
    QTest::addRow("syntax error") << "function print() {\n  var = 1;\n}\n"
                                  << "SyntaxError" << 2;
    QTest::addRow("error while printing")
        << "function print() {\n  setFont('Arial', 10, 'normal');\n  drawText(10, 10);\n}\n"
        << "TypeError: vähintään 3 parametria" << 3;
}

// The test run previews the edited source with the chosen invoice; errors
// come with their line.
void TestScriptEditorDialog::testRun()
{
    QFETCH(QString, source);
    QFETCH(QString, message);
    QFETCH(int, line);
    Editor editor(m_fixture.registry());
    editor.show();
    QVERIFY(editor.currentId() > 0);
    if (!source.isEmpty())
        child<QPlainTextEdit>(&editor, "source")->setPlainText(source);
    QTest::mouseClick(child<QPushButton>(&editor, "testRun"), Qt::LeftButton);
    if (editor.previewWidget())
        editor.previewWidget()->updatePreview();
    if (message.isEmpty()) {
        QVERIFY(editor.previewWidget());
        QCOMPARE(editor.previewWidget()->pageCount(), 1);
        QVERIFY2(editor.errors.isEmpty(), qPrintable(editor.errors.join('\n')));
        return;
    }
    // Errors while painting the preview arrive after the paint.
    QTRY_VERIFY(!editor.errors.isEmpty());
    QVERIFY2(editor.errors.first().startsWith(message), qPrintable(editor.errors.first()));
    QString file;
    int errorLine = 0;
    QVERIFY(ScriptErrorDialog::parseLocation(editor.errors.first(), &file, &errorLine));
    QCOMPARE(errorLine, line);
}

void TestScriptEditorDialog::saveChecksTheName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("message");
    QTest::addRow("empty") << "  "
                           << "Anna skriptille nimi.";
    QTest::addRow("taken") << "Serif-otsikko"
                           << "Skripti nimeltä Serif-otsikko on jo olemassa.";
}

void TestScriptEditorDialog::saveChecksTheName()
{
    QFETCH(QString, name);
    QFETCH(QString, message);
    Editor editor(m_fixture.registry());
    const int scripts = m_fixture.registry()->printScriptCount();
    editor.newScript();
    child<QLineEdit>(&editor, "name")->setText(name);
    QVERIFY(!editor.saveScript());
    QCOMPARE(editor.messages, QStringList { message });
    QCOMPARE(m_fixture.registry()->printScriptCount(), scripts);
    QCOMPARE(editor.currentId(), -1);
}

void TestScriptEditorDialog::deletingTheDefaultRestoresBuiltIn()
{
    Editor editor(m_fixture.registry());
    const int id = m_fixture.registry()->settings()->property("printScripts/invoice").toInt();
    QVERIFY(id > 0);
    editor.selectScript(id);
    QCOMPARE(editor.currentId(), id);
    QVERIFY(editor.deleteScript());
    QCOMPARE(editor.questions, 1);
    QVERIFY(!m_fixture.registry()->settings()->property("printScripts/invoice").isValid());
    QCOMPARE(m_fixture.registry()->printScriptIndexById(id), -1);
    const QString fonts = printedFonts(QStringLiteral("deleted.pdf"));
    QVERIFY2(fonts.contains(QStringLiteral("LiberationSans")), qPrintable(fonts));
    QVERIFY(!fonts.contains(QStringLiteral("LiberationSerif")));
}

QTEST_MAIN(TestScriptEditorDialog)
#include "tst_scripteditordialog.moc"
