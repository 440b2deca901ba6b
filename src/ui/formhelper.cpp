#include "formhelper.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>

QLabel* FormHelper::addRow(
    QFormLayout* layout, const QString& caption, QWidget* field, QWidget* buddy)
{
    QLabel* label = new QLabel(caption);
    label->setBuddy(buddy ? buddy : field);
    layout->addRow(label, field);
    return label;
}

QCheckBox* FormHelper::addCheckBox(QFormLayout* layout, const QString& text, const QString& name)
{
    QCheckBox* check = new QCheckBox(text);
    check->setObjectName(name);
    layout->addRow(QString(), check);
    return check;
}

QPushButton* FormHelper::createButton(const QString& text, const QString& name)
{
    QPushButton* button = new QPushButton(text);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

QDialogButtonBox* FormHelper::createButtonBox(QDialog* dialog)
{
    QDialogButtonBox* buttons
        = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QCoreApplication::translate("FormHelper", "OK"));
    buttons->button(QDialogButtonBox::Cancel)
        ->setText(QCoreApplication::translate("FormHelper", "Peruuta"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

void FormHelper::fitColumns(QHeaderView* header)
{
    // About forty characters are enough for a name in a list.
    constexpr int widestColumnInCharacters = 40;
    header->resizeSections(QHeaderView::ResizeToContents);
    const int widest = header->fontMetrics().averageCharWidth() * widestColumnInCharacters;
    for (int column = 0; column < header->count(); ++column) {
        if (!header->isSectionHidden(column) && header->sectionSize(column) > widest)
            header->resizeSection(column, qMax(widest, header->sectionSizeHint(column)));
    }
}

void FormHelper::setTabOrder(std::initializer_list<QWidget*> widgets)
{
    QWidget* previous = nullptr;
    for (QWidget* widget : widgets) {
        if (previous)
            QWidget::setTabOrder(previous, widget);
        previous = widget;
    }
}

DecimalFormat::ParseStatus FormHelper::parseDecimal(
    const QString& text, int fractionDigits, int minFractionDigits, qint64& value)
{
    QString compact = text.trimmed();
    compact.remove(QLatin1Char(' '));
    compact.remove(QChar(0x00a0));
    compact.remove(QChar(0x202f));
    compact.replace(QLatin1Char(','), QLatin1Char('.'));
    if (compact.isEmpty() || compact.count(QLatin1Char('.')) > 1)
        return DecimalFormat::ParseStatus::Invalid;
    const DecimalFormat format(fractionDigits, minFractionDigits);
    DecimalFormat::ParseStatus status = DecimalFormat::ParseStatus::Invalid;
    value = format.parse(compact, status);
    return status;
}
