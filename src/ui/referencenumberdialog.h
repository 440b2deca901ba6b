#ifndef REFERENCENUMBERDIALOG_H
#define REFERENCENUMBERDIALOG_H

#include <QDialog>

class MainModel;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class Registry;

// The reference number and the notice texts of the current invoice, with
// a calculator that turns any base number into a national reference (with
// its check digit) or an RF creditor reference. The dialog edits copies;
// accepting writes them into the invoice when it is editable. Whether the
// reference is also to be stored as the customer's own is left to the
// caller (saveAsCustomerReference()).
class ReferenceNumberDialog : public QDialog
{
    Q_OBJECT
public:
    ReferenceNumberDialog(Registry* registry, MainModel* model, QWidget* parent = nullptr);

    QString referenceNumber() const;
    void setReferenceNumber(const QString& reference);
    bool saveAsCustomerReference() const;

public slots:
    void accept() override;
    // The reference from the company template and the notice texts from
    // the company settings, as for a new invoice.
    void rebuild();

protected:
    // Every refusal goes through here, so tests can catch it.
    virtual void showWarning(const QString& text);

private:
    void baseEdited();

    Registry* m_registry;
    MainModel* m_model;
    bool m_editable;
    QLineEdit* m_referenceEdit;
    QPlainTextEdit* m_noticeText1Edit;
    QPlainTextEdit* m_noticeText2Edit;
    QCheckBox* m_customerCheck;
    QPushButton* m_rebuildButton;
    QLineEdit* m_baseEdit;
    QLabel* m_nationalLabel;
    QLabel* m_rfLabel;
    QPushButton* m_useNationalButton;
    QPushButton* m_useRfButton;
};

#endif // REFERENCENUMBERDIALOG_H
