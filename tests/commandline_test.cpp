#include "commands/argumentvalues.h"

#include "programsupport.h"

#include <gtest/gtest.h>

using namespace seamrevise;

namespace
{

TEST_F(Seamrevise, CommandLinesEndWithTheirCodes)
{
    makeWall();
    const struct
    {
        int code;
        const char *words, *says;
    } rows[] = {
        {0, "--help", "Usage"},
        {0, "help", "Usage"},
        {0, "revise --help", "--margin"},
        {0, "help revise", "Example: seamrevise revise"},
        {0, "revise --margin x --frob -h", "--margin"},
        {0, "revise --version", "seamrevise "},
        {0, "-V", "seamrevise "},
        {2, "", "name a command"},
        {2, "polish", "there is no command polish\nseamrevise --help tells more"},
        {2, "simluate", "did you mean simulate?"},
        {2, "help polish", "polish"},
        {2, "revise", "name a database"},
        {2, "revise %d/w.db", "--output"},
        {2, "revise %d/w.db other -o %d/o", "other"},
        {2, "revise %d/w.db -o %d/o --frob", "no option --frob; a name that begins with a dash"},
        {2, "revise %d/w.db --outptu %d/o", "did you mean --output?"},
        {2, "revise %d/w.db -o %d/o -table", "did you mean --table?"},
        {2, "revise %d/w.db -o --table", "but an option follows: --table"},
        {2, "revise %d/w.db -o", "-o needs a value"},
        {2, "revise %d/w.db -o %d/o --output %d/p", "more than once"},
        {2, "revise %d/w.db -o %d/o --table=no", "takes no value"},
        {2, "revise %d/w.db -o %d/o -- --table", "unexpected argument --table"},
        {2, "revise %d/w.db -o %d/o --margin 1x", "seamrevise revise --help tells more"},
        {2, "revise %d/w.db -o %d/o --files --table", "exclude"},
        {2, "revise %d/w.db -o %d/o --margin -1", "--margin"},
        {2, "revise %d/w.db -o %d/o --band 3", "--band"},
        {2, "simulate %d/v.db --size 0x0 --grid 1x1", "0x0"},
        {2, "simulate %d/v.db --size 99999999999x1 --grid 1x1", "--size"},
        {2, "simulate %d/v.db --size 65535x65535 --grid 1x1", "pixels"},
        {2, "simulate %d/v.db --size 30000x30000 --grid 1x1", "finer grid"},
        {2, "simulate %d/v.db --size 9x9 --grid 10x1", "--grid"},
        {2, "simulate %d/v.db --size 9x9 --grid 2x2 --uncorrected 1,5", "1 to 4, not 5"},
        {3, "revise %d/none.db -o %d/o", "none.db"},
        {3, "revise %d -o %d/o", "not a file"},
        {3, "revise %d/w.db -o %d/o --layers 3", "partition 1"},
        {3, "revise %d/w.db -o %d/o --band 7x5", "partition 1: its zone lacks 36 of"},
        {4, "simulate %d/w.db --size 9x9 --grid 2x2", "--force"},
        {4, "simulate %d/none/v.db --size 9x9 --grid 2x2", "v.db: "},
        {4, "revise %d/w.db -o %d/w.db", "w.db"},
        {4, "revise %d/w.db -o %d/o --dumps %d/w.db", "w.db"},
    };
    for (const auto &row : rows)
        expect(row.code, row.words, row.says);
    EXPECT_EQ(files("%d"), QStringList("w.db"));
    EXPECT_TRUE(files("%d/o").isEmpty());
}

#ifdef __SANITIZE_ADDRESS__
constexpr bool memoryCanBeLimited = false; // the sanitizer reserves terabytes
#else
constexpr bool memoryCanBeLimited = true;
#endif

TEST_F(Seamrevise, TheProgramEndsWithItsCodes)
{
    const char *const noMemory
        = "ulimit -v 400000; %p simulate %d/m.db --size 6000x6000 --grid 1x1";
    const struct
    {
        int code;
        const char *script, *says;
    } rows[] = {
        {4, "%p help >/dev/full", "standard output cannot be written"},
        {4, "%p help >&-", "standard output cannot be written"},
        {4, "%p simulate %d/w.db --size 99x99 --grid 2x2 >&-", "standard output"},
        {0, "%p revise -q %d/w.db -o %d/o >&-", ""}, // nothing was written into the database
        {0, "%p revise --force %d/w.db -o %d/o >/dev/null 2>&-", ""},
        {2, "%p revise \"$(printf '%d/w\\377.db')\" -o %d/o", "not valid UTF-8"},
        {2, "%p revise %d/w.db -o \"$(printf '%d/o\\377')\"", "not valid UTF-8"},
        {0, "cd %d; %p simulate --size 9x9 --grid 2x2 -- -w.db", "-w.db"},
        {4, "ulimit -f 8; %p simulate %d/v.db --size 99x99 --grid 2x2", "v.db"},
        {memoryCanBeLimited ? 5 : 0, memoryCanBeLimited ? noMemory : "true", ""},
    };
    for (const auto &row : rows) {
        const Outcome outcome = shell(row.script);
        EXPECT_EQ(outcome.code, row.code) << row.script << '\n' << outcome.printed;
        EXPECT_NE(outcome.printed.find(row.says), std::string::npos) << outcome.printed;
    }
    EXPECT_EQ(files("%d"), QStringList({"-w.db", "w.db"}));
}

TEST_F(Seamrevise, QuietCommandsPrintNothing)
{
    EXPECT_EQ(expect(0, "simulate -q %d/w.db --size 99x99 --grid 2x2"), "");
    EXPECT_EQ(expect(0, "revise -q %d/w.db -o %d/o"), "");
    EXPECT_NE(expect(0, "revise -qv --force %d/w.db -o %d/o"), "");
}

TEST(ArgumentValues, AreTakenWholeOrNotAtAll)
{
    EXPECT_EQ(parsePercent("0.5%"), 0.005);
    EXPECT_EQ(parsePercent(".005"), 0.005);
    for (const char *const text : {"", "%", "-1%", "1e3", " 1", "nan", "0,5", "1%%", "1.2.3"})
        EXPECT_FALSE(parsePercent(text)) << text;
    EXPECT_EQ(parseRect("1,2,1,40").value().bottom(), 40);
    for (const char *const text : {"", "1,2,3", "1,2,0,4", "1,2,3,1", "-1,2,3,4", "1,2,3,4,5"})
        EXPECT_FALSE(parseRect(text)) << text;
    EXPECT_EQ(parseWeights("1,2,1"), (std::array<double, 3>{0.25, 0.5, 0.25}));
    for (const char *const text : {"", "1,2", "1,0,1", "1,-2,1", "1,2,3,4", "1,x,1"})
        EXPECT_FALSE(parseWeights(text)) << text;
}

} // namespace
