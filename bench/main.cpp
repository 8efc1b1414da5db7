#include "cases.h"
#include "figures.h"
#include "peakmemory.h"

#include <QtGlobal>

#include <cstring>

namespace
{

void discard(QtMsgType, const QMessageLogContext &, const QString &) {}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(discard);
    bench::keepMemory(true);
    if (argc == 3 && std::strcmp(argv[1], bench::peakMemoryArgument) == 0)
        return bench::runForPeakMemory(argv[2]);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    bench::registerCipherCases();
    bench::registerSingleLayerCases();
    bench::registerLayeredCases();
    bench::registerBlendCases();
    bench::registerDumpCases();
    bench::registerMemoryCases();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    bench::printTable();
    return bench::isGoodEnough() ? 0 : 1;
}
