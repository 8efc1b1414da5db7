#include "seamrevision/funcrunningstate.h"

#include <utility>

namespace
{

FuncRunningState::Observer &installedObserver()
{
    static FuncRunningState::Observer observer;
    return observer;
}

/// A guard stands outside of whatever catches exceptions, so none may come from it.
void tellObserver(const char *event, const QString &function) noexcept
{
    try {
        if (installedObserver())
            installedObserver()(event, function);
    } catch (...) { // told or not, the function runs
    }
}

} // namespace

void FuncRunningState::setObserver(Observer observer)
{
    installedObserver() = std::move(observer);
}

FuncRunningState::FuncRunningState(const QString &function)
    : m_function(function)
{
    tellObserver("entered", m_function);
}

FuncRunningState::~FuncRunningState()
{
    tellObserver("left", m_function);
}
