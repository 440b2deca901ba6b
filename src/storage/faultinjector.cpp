#include "faultinjector.h"

#include <memory>

namespace {

struct Fault
{
    int remaining = 0; // statements until the failing one; 0 with a pattern
    QRegularExpression pattern;
    QString error;
    std::function<void()> action; // set: run it, and the statement runs too
};

std::unique_ptr<Fault>& fault()
{
    static std::unique_ptr<Fault> current;
    return current;
}

std::unique_ptr<QStringList>& recorded()
{
    static std::unique_ptr<QStringList> statements;
    return statements;
}

} // namespace

void FaultInjector::failStatement(int n, const QString& error)
{
    fault() = std::make_unique<Fault>(Fault { qMax(n, 1), QRegularExpression(), error, {} });
}

void FaultInjector::beforeStatement(int n, const std::function<void()>& action)
{
    fault()
        = std::make_unique<Fault>(Fault { qMax(n, 1), QRegularExpression(), QString(), action });
}

void FaultInjector::failMatching(const QRegularExpression& pattern, const QString& error)
{
    fault() = std::make_unique<Fault>(Fault { 0, pattern, error, {} });
}

void FaultInjector::clear()
{
    fault().reset();
}

bool FaultInjector::isPending()
{
    return fault() != nullptr;
}

void FaultInjector::startRecording()
{
    recorded() = std::make_unique<QStringList>();
}

QStringList FaultInjector::stopRecording()
{
    QStringList statements = recorded() ? *recorded() : QStringList();
    recorded().reset();
    return statements;
}

bool FaultInjector::check(const QString& sql, QString* error)
{
    if (recorded())
        recorded()->append(sql);
    std::unique_ptr<Fault>& current = fault();
    if (!current)
        return false;
    const bool fires = current->remaining > 0 ? --current->remaining == 0
                                              : current->pattern.match(sql).hasMatch();
    if (!fires)
        return false;
    if (current->action) {
        // The action may set a new fault: take this one off first.
        const std::function<void()> action = std::move(current->action);
        current.reset();
        action();
        return false;
    }
    *error = current->error;
    current.reset();
    return true;
}
