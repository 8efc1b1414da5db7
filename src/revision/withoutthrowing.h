#pragma once

#include "records/trace.h"

#include <exception>

namespace seamrevision
{

/// Runs a file operation and turns whatever it throws, memory first of all, into false.
template <typename Operation>
bool withoutThrowing(const Trace &trace, int tag, Operation operation)
{
    try {
        return operation();
    } catch (...) {
        trace.critical(tag, "Unexpected exception!");
        return false;
    }
}

} // namespace seamrevision
