#ifndef INTERESTONARREARSPANEL_H
#define INTERESTONARREARSPANEL_H

#include <QWidget>

class InterestOnArrearsTableModel;
class QPushButton;
class QTableView;

// The contents of the interest dock: the late invoices collected so far and
// the buttons of the main window's interest commands. The window does the
// work; the panel only tells which button was pressed.
class InterestOnArrearsPanel : public QWidget
{
    Q_OBJECT
public:
    explicit InterestOnArrearsPanel(InterestOnArrearsTableModel* model, QWidget* parent = nullptr);

    QTableView* tableView() const { return m_tableView; }
    // The selected row, -1 for none.
    int currentRow() const;
    // The buttons that act on collected rows work only when there are some;
    // calculate only with an invoice shown.
    void updateButtons(bool invoiceShown);

signals:
    void calculateRequested();
    void removeRequested();
    void clearRequested();
    void createInvoiceRequested();
    void addRowsRequested();

private:
    QPushButton* addButton(
        const QString& name, const QString& text, void (InterestOnArrearsPanel::*signal)());

    InterestOnArrearsTableModel* m_model;
    QTableView* m_tableView;
    QPushButton* m_calculateButton;
    QPushButton* m_addRowsButton;
    QList<QPushButton*> m_rowButtons;
};

#endif // INTERESTONARREARSPANEL_H
