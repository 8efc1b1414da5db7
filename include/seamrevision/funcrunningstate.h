#pragma once

#include "seamrevision/export.h"

#include <QString>

#include <functional>

/// Marks that a function of the library runs, from construction to destruction.
///
/// A host hangs progress bars and timings on it by installing an observer. Without one a guard
/// costs next to nothing.
class SEAMREVISION_EXPORT FuncRunningState
{
public:
    /// Told "entered" or "left" and the qualified name, "PartitionMerge::startRevise". Called on
    /// the engine's thread; what it throws is dropped.
    using Observer = std::function<void(const char *event, const QString &function)>;

    /// Installs the process's one observer; an empty one removes it. Only while no engine runs.
    static void setObserver(Observer observer);

    explicit FuncRunningState(const QString &function);
    ~FuncRunningState();
    FuncRunningState(const FuncRunningState &) = delete;
    FuncRunningState &operator=(const FuncRunningState &) = delete;

private:
    const QString m_function;
};
