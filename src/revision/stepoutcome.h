#pragma once

#include "seamrevision/revisetypes.h"

#include <QString>

namespace seamrevision
{

/// What a step of a revision came to: anything but success ends the revision with a code and text.
struct StepOutcome
{
    enum_ErrCodeType code = ErrCode_Success;
    QString text;

    bool failed() const { return code != ErrCode_Success; }
};

} // namespace seamrevision
