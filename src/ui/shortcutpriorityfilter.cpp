#include "shortcutpriorityfilter.h"

#include <QKeyEvent>
#include <QWidget>

ShortcutPriorityFilter::ShortcutPriorityFilter(QWidget* window, const QList<QKeySequence>& keys)
    : QObject(window), m_window(window), m_keys(keys)
{
}

bool ShortcutPriorityFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::ShortcutOverride || !watched->isWidgetType()
        || static_cast<QWidget*>(watched)->window() != m_window)
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (!m_keys.contains(QKeySequence(key->keyCombination())))
        return false;
    // Unclaimed, the key goes on to the shortcut map; the parents get the
    // same answer on the way up.
    event->ignore();
    return true;
}
