#include "numbers/finding.h"

#include <QStringList>

#include <algorithm>

namespace seamrevise
{

bool hasErrors(const Findings &findings)
{
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding &finding) { return finding.severity == Severity::Error; });
}

QString severityText(Severity severity)
{
    return severity == Severity::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

QString findingText(const Finding &finding)
{
    if (finding.seam)
        return QStringLiteral("seam %1 - %2: %3")
            .arg(finding.seam->current)
            .arg(finding.seam->next)
            .arg(finding.message);
    if (finding.partition)
        return QStringLiteral("partition %1: %2").arg(*finding.partition).arg(finding.message);
    return finding.message;
}

QString percentText(double fraction)
{
    return QString::number(fraction * 100.0, 'f', 2) + QStringLiteral(" %");
}

QString listText(const std::vector<int> &numbers)
{
    QStringList texts;
    for (const int number : numbers)
        texts.push_back(QString::number(number));
    return texts.join(QStringLiteral(", "));
}

} // namespace seamrevise
