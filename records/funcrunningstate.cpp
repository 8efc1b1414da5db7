#include "records/funcrunningstate.h"

#include <utility>

namespace
{

FuncRunningState::Observer &installedObserver()
{
    static FuncRunningState::Observer observer;
    return observer;
}

} // namespace

void FuncRunningState::setObserver(Observer observer)
{
    installedObserver() = std::move(observer);
}

FuncRunningState::FuncRunningState(const QString &function)
    : m_function(function)
{
    if (installedObserver())
        installedObserver()("entered", m_function);
}

FuncRunningState::~FuncRunningState()
{
    if (installedObserver())
        installedObserver()("left", m_function);
}
