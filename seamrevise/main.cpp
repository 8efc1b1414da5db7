#include "commands/commandline.h"
#include "process/interruption.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <limits>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

namespace
{

/// Without this, a file that is opened while a standard stream is closed takes its place, and what
/// is printed lands in it. Using such a stream still fails.
void keepStandardStreamsApart()
{
    while (true) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): as it is declared
        const int opened = open("/dev/null", O_RDONLY);
        if (opened == STDIN_FILENO || opened == STDOUT_FILENO || opened == STDERR_FILENO)
            continue;
        if (opened >= 0)
            close(opened);
        return;
    }
}

/// Keeps freed memory for the next step instead of giving it back to the system: fresh pages cost
/// more than most of what is done with them.
void keepMemory()
{
#ifdef __GLIBC__
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_TOP_PAD, 64 << 20);
#endif
}

} // namespace

int main(int argc, char *argv[])
{
    keepMemory();
    keepStandardStreamsApart();
    std::signal(SIGXFSZ, SIG_IGN); // a file that grows too large is an error of its write
    seamrevise::handleInterruptions();
    // Paths and the names of dumps are UTF-8 in the plain C locale, too.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    // The bytes themselves, since Qt changes what is not UTF-8 and keeps options of its own.
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    int programName = std::min(argc, 1);
    const QCoreApplication application(programName, argv);
    const bool errIsTerminal = isatty(STDERR_FILENO) != 0;
    return seamrevise::runCommandLine(words, errIsTerminal, std::cout, std::cerr);
}
