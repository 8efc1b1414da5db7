#include "commands/commandline.h"
#include "commands/exitcode.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <iostream>

#include <unistd.h>

int main(int argc, char *argv[])
{
    // Paths and the names of dumps are UTF-8 in the plain C locale, too.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const QCoreApplication application(argc, argv);
    const bool errIsTerminal = isatty(STDERR_FILENO) != 0;
    const int code = seamrevise::runCommandLine(QCoreApplication::arguments(), errIsTerminal,
                                                std::cout, std::cerr);
    std::cout.flush();
    return code == seamrevise::Exit_Done && !std::cout ? int{seamrevise::Exit_Output} : code;
}
