#include "faultinjector.h"

#include <memory>

namespace {

struct Fault
{
    int remaining = 0; // statements until the failing one; 0 with a pattern
    QRegularExpression pattern;
    QString error;
};

std::unique_ptr<Fault>& fault()
{
    static std::unique_ptr<Fault> current;
    return current;
}

} // namespace

void FaultInjector::failStatement(int n, const QString& error)
{
    fault() = std::make_unique<Fault>(Fault { qMax(n, 1), QRegularExpression(), error });
}

void FaultInjector::failMatching(const QRegularExpression& pattern, const QString& error)
{
    fault() = std::make_unique<Fault>(Fault { 0, pattern, error });
}

void FaultInjector::clear()
{
    fault().reset();
}

bool FaultInjector::isPending()
{
    return fault() != nullptr;
}

bool FaultInjector::check(const QString& sql, QString* error)
{
    std::unique_ptr<Fault>& current = fault();
    if (!current)
        return false;
    const bool fires = current->remaining > 0 ? --current->remaining == 0
                                              : current->pattern.match(sql).hasMatch();
    if (!fires)
        return false;
    *error = current->error;
    current.reset();
    return true;
}
