#pragma once

#include "store/screenlayout.h"

#include <QString>

#include <optional>
#include <vector>

namespace seamrevise
{

enum class Severity
{
    Error,  ///< the wall cannot be revised
    Warning ///< it can, but something looks wrong
};

/// Something that is or looks wrong with a wall: where, how much, and what to do about it.
struct Finding
{
    QString kind; ///< one word for programs: "zone-too-small"
    Severity severity = Severity::Error;
    std::optional<int> partition;
    std::optional<SeamPair> seam;
    std::optional<double> value; ///< the number that the message is about
    QString message;
};

using Findings = std::vector<Finding>;

bool hasErrors(const Findings &findings);

/// "error" or "warning".
QString severityText(Severity severity);

/// One line: "partition 3: its zone lacks ...".
QString findingText(const Finding &finding);

/// "1.28 %".
QString percentText(double fraction);

/// "5, 9".
QString listText(const std::vector<int> &numbers);

} // namespace seamrevise
