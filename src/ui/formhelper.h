#ifndef FORMHELPER_H
#define FORMHELPER_H

#include "domain/decimalformat.h"

#include <QString>
#include <initializer_list>

class QCheckBox;
class QDialog;
class QDialogButtonBox;
class QFormLayout;
class QHeaderView;
class QLabel;
class QPushButton;
class QWidget;

// The pieces that the dialogs build their forms from.
class FormHelper
{
public:
    // A new widget of type T with an object name, for tests to find it by.
    template<typename T>
    static T* create(const QString& name)
    {
        T* widget = new T();
        widget->setObjectName(name);
        return widget;
    }
    // A row of a form: the caption's mnemonic gives buddy (by default the
    // field itself) the keyboard.
    static QLabel* addRow(
        QFormLayout* layout, const QString& caption, QWidget* field, QWidget* buddy = nullptr);
    template<typename T>
    static T* addField(QFormLayout* layout, const QString& caption, const QString& name)
    {
        T* field = create<T>(name);
        addRow(layout, caption, field);
        return field;
    }
    static QCheckBox* addCheckBox(QFormLayout* layout, const QString& text, const QString& name);
    // A button that Return in a field does not press.
    static QPushButton* createButton(const QString& text, const QString& name);
    // "OK" and "Peruuta", wired to the dialog's accept() and reject().
    static QDialogButtonBox* createButtonBox(QDialog* dialog);
    // Sizes the visible columns to their header texts and contents; a long
    // text is cut rather than push the other columns out of sight.
    static void fitColumns(QHeaderView* header);
    // Chains the keyboard order through the widgets.
    static void setTabOrder(std::initializer_list<QWidget*> widgets);

    // Reads a decimal number typed with a comma or a point (and perhaps
    // spaces between thousands) as an integer with the given number of
    // decimals. DecimalFormat works in 32 bits: a larger number is TooLarge.
    static DecimalFormat::ParseStatus parseDecimal(
        const QString& text, int fractionDigits, int minFractionDigits, qint64& value);
};

#endif // FORMHELPER_H
