#ifndef INVOICERANGEDIALOG_H
#define INVOICERANGEDIALOG_H

#include <QDialog>

class QSpinBox;

// Chooses the invoices to print several at once: a range of invoice
// numbers, both ends included.
class InvoiceRangeDialog : public QDialog
{
    Q_OBJECT
public:
    InvoiceRangeDialog(const QString& title, int first, int last, QWidget* parent = nullptr);

    int firstNumber() const;
    int lastNumber() const;
    QSpinBox* firstSpinBox() const { return m_firstSpin; }
    QSpinBox* lastSpinBox() const { return m_lastSpin; }

private:
    QSpinBox* m_firstSpin;
    QSpinBox* m_lastSpin;
};

#endif // INVOICERANGEDIALOG_H
