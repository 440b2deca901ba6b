#pragma once

#include <QKeySequence>
#include <QList>
#include <QObject>

class QWidget;

// Lets some shortcuts of a window win over the editing keys of its fields.
// On X11, line edits claim Ctrl+E (end of line) before the window's
// shortcuts are looked at; installed on the application, this filter turns
// that claim down for the given keys in the given window only, so dialogs
// keep their fields' keys.
class ShortcutPriorityFilter : public QObject
{
    Q_OBJECT

public:
    ShortcutPriorityFilter(QWidget* window, const QList<QKeySequence>& keys);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* m_window;
    QList<QKeySequence> m_keys;
};
