#ifndef ABOUTDIALOG_H
#define ABOUTDIALOG_H

#include <QDialog>

// The program's name, version, purpose and copyright holder.
class AboutDialog : public QDialog
{
    Q_OBJECT
public:
    explicit AboutDialog(QWidget* parent = nullptr);

    static QString version();
};

#endif // ABOUTDIALOG_H
