#include "scripterrordialog.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QVBoxLayout>

ScriptErrorDialog::ScriptErrorDialog(const QString& error, QWidget* parent)
    : QDialog(parent)
    , m_message(error.section(QLatin1Char('\n'), 0, 0))
    , m_locationLabel(new QLabel(this))
{
    setWindowTitle(tr("Skriptivirhe"));
    parseLocation(error, &m_file, &m_line);

    auto* messageLabel = new QLabel(m_message, this);
    messageLabel->setObjectName(QStringLiteral("message"));
    messageLabel->setWordWrap(true);
    messageLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = messageLabel->font();
    bold.setBold(true);
    messageLabel->setFont(bold);
    m_locationLabel->setObjectName(QStringLiteral("location"));

    auto* details = new QPlainTextEdit(error, this);
    details->setObjectName(QStringLiteral("details"));
    details->setReadOnly(true);
    details->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    details->setLineWrapMode(QPlainTextEdit::NoWrap);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(messageLabel);
    layout->addWidget(m_locationLabel);
    layout->addWidget(details, 1);
    layout->addWidget(buttons);
    resize(640, 320);
    updateLocation();
}

void ScriptErrorDialog::setScriptName(const QString& name)
{
    m_scriptName = name;
    updateLocation();
}

QString ScriptErrorDialog::location() const
{
    if (m_line <= 0)
        return QString();
    QString file = m_file;
    if (file.isEmpty() || file == QLatin1String("eval"))
        file = m_scriptName;
    if (file.isEmpty())
        return tr("Rivi %1").arg(m_line);
    return tr("%1, rivi %2").arg(file).arg(m_line);
}

void ScriptErrorDialog::updateLocation()
{
    m_locationLabel->setText(location());
    m_locationLabel->setVisible(m_line > 0);
}

bool ScriptErrorDialog::parseLocation(const QString& error, QString* file, int* line)
{
    static const QRegularExpression frame(
        QStringLiteral("^\\s*at .*\\(([^()]*):(\\d+)\\)"), QRegularExpression::MultilineOption);
    for (auto it = frame.globalMatch(error); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        const QString name = match.captured(1);
        // Frames of the engine's own C and C++ sources say nothing to the user.
        if (name.endsWith(QLatin1String(".c")) || name.endsWith(QLatin1String(".cpp")))
            continue;
        *file = name;
        *line = match.captured(2).toInt();
        return true;
    }
    static const QRegularExpression compilerLine(QStringLiteral("\\(line (\\d+)\\)"));
    const QRegularExpressionMatch match = compilerLine.match(error);
    if (match.hasMatch()) {
        file->clear();
        *line = match.captured(1).toInt();
        return true;
    }
    file->clear();
    *line = 0;
    return false;
}
