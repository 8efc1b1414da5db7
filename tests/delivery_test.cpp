#include "delivery/deliveredset.h"
#include "delivery/delivery.h"
#include "delivery/filesystem.h"
#include "delivery/stagedfiles.h"
#include "delivery/verification.h"
#include "exchange/coefficientfile.h"
#include "exchange/dumpcheck.h"
#include "exchange/npywriter.h"
#include "process/interruption.h"
#include "store/sqlscreenstore.h"

#include "programsupport.h"
#include <seamrevision/des.h>

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>
#include <random>
#include <thread>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace seamrevise;

namespace
{

/// A wall of two partitions of 3x2 pixels, side by side on a screen that begins at (10, 20).
const NQRect rects[] = {{10, 20, 12, 21}, {13, 20, 15, 21}};
constexpr int pixels = 6;

template <typename Value>
void writeCoefficients(const QString &path, const std::vector<Value> &values)
{
    std::vector<unsigned char> bytes(values.size() * sizeof(Value));
    qToLittleEndian<Value>(values.data(), static_cast<qsizetype>(values.size()), bytes.data());
    ASSERT_TRUE(DES().DESEncrypt("qalvetor", "qalvetor", bytes, bytes));
    writeFile(path, QByteArray(reinterpret_cast<const char *>(bytes.data()), bytes.size()));
}

/// Sets without an engine: every value of a set is one number.
class DeliveryTest : public Seamrevise
{
protected:
    static Manifest manifest(int layerCount = 0, bool isTable = false)
    {
        Manifest manifest;
        manifest.version = "1";
        manifest.command = QStringList{"revise", "w \"1\".db"};
        manifest.when = "2026-01-31T12:00:00Z";
        manifest.database = "w.db";
        manifest.screen = NQRect(10, 20, 15, 21);
        manifest.grid = {2, 1};
        manifest.band = {1, 1};
        manifest.layerCount = layerCount;
        manifest.isTable = isTable;
        manifest.partitions.resize(2);
        for (int i = 0; i < 2; ++i) {
            manifest.partitions[i].number = i + 1;
            manifest.partitions[i].rect = rects[i];
        }
        return manifest;
    }

    /// Writes a set's files; partition 2 is the same in all sets unless its value is given.
    static void writeSet(const QString &dir, int value, int second = 7)
    {
        const int values[] = {value, second};
        for (int i = 0; i < 2; ++i)
            writeCoefficients(dir + QString("/%1").arg(i + 1),
                              std::vector<quint16>(pixels * 9, values[i]));
    }

    Delivery::Request request(bool force = true, int keep = 1) const
    {
        return {in("%d/out"), force, keep, {}};
    }
    /// Delivers a whole set. Empty, or the fault.
    static QString deliver(Delivery &delivery, const Delivery::Request &request, int value)
    {
        QString fault = delivery.begin(request);
        if (!fault.isEmpty())
            return fault;
        writeSet(delivery.path(), value);
        fault = delivery.addFile("numbers.json", QByteArray::number(value));
        Manifest manifest_ = manifest();
        if (fault.isEmpty())
            fault = delivery.seal(manifest_);
        return fault.isEmpty() ? delivery.commit() : fault;
    }
    QString deliver(int value, bool force = true, int keep = 1) const
    {
        Delivery delivery;
        return deliver(delivery, request(force, keep), value);
    }

    /// The value of a set that is whole; -1 if it is not.
    int delivered(const QString &name = "out") const
    {
        DeliveredSet set;
        std::vector<qint32> values;
        const bool isRead = set.open(in("%d/") + name) == DeliveredSet::State::Ready
            && verifyFiles(set.path()).empty()
            && set.read(set.manifest().partitions[0], coefficientFormats(0)[0], values).isEmpty();
        EXPECT_TRUE(isRead) << set.message().toStdString();
        return isRead ? values[0] : -1;
    }
    QStringList entries(const char *dir = "%d") const { return entriesOf(in(dir)); }
    /// The sets that were replaced, the newest first.
    QStringList kept() const
    {
        Place place;
        EXPECT_EQ(findPlace(in("%d/out"), place), "");
        return keptSets(place);
    }
};

/// Runs something in a process of its own; its exit code, or 1000 and the signal that ended it.
template <typename Action>
int inProcess(const Action &action, const std::function<void(pid_t)> &meanwhile = {})
{
    const pid_t child = fork();
    if (child == 0) {
        const QString fault = action();
        if (!fault.isEmpty())
            fprintf(stderr, "%s\n", fault.toUtf8().constData());
        _exit(fault.isEmpty() ? 0 : 4);
    }
    if (meanwhile)
        meanwhile(child);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

/// openssl enc -des-cbc -provider legacy -provider default -K 71616c7665746f72
///     -iv 71616c7665746f72, of the bytes 78563412 feffffff ffffff3f.
const QByteArray openSslFile = QByteArray::fromHex("779797c6d8be44f82130ca64e8e66f2f");

TEST_F(DeliveryTest, CoefficientFilesAreReadWithoutAnEngine)
{
    std::vector<quint16> single;
    const QString tiny = in("%d/tiny");
    QByteArray hex = readFile(QStringLiteral(TEST_DATA_DIR "/tiny-coefficient-file.hex"));
    hex = hex.mid(hex.indexOf('\n'));
    writeFile(tiny, QByteArray::fromHex(hex));
    EXPECT_EQ(readCoefficientFile(tiny, 9, single), "");
    EXPECT_EQ(single, (std::vector<quint16>{2048, 0, 0, 0, 2048, 0, 0, 0, 2048}));

    writeFile(in("%d/1_m"), openSslFile);
    std::vector<qint32> layered;
    EXPECT_EQ(readCoefficientFile(in("%d/1_m"), 3, layered), "");
    EXPECT_EQ(layered, (std::vector<qint32>{0x12345678, -2, 0x3FFFFFFF}));
    std::vector<quint32> words;
    EXPECT_EQ(readCoefficientFile(in("%d/1_m"), 3, words), "");
    EXPECT_EQ(words, (std::vector<quint32>{0x12345678, 0xFFFFFFFE, 0x3FFFFFFF}));

    QByteArray badEnd = openSslFile;
    badEnd[badEnd.size() - 1] = static_cast<char>(~badEnd[badEnd.size() - 1]);
    QDir().mkpath(in("%d/dir"));
    const struct
    {
        const char *name;
        QByteArray content;
        const char *says;
    } cases[] = {
        {"none", {}, "missing"},
        {"dir", {}, "is not a file"},
        {"empty", "", "has 0 bytes instead of 16"},
        {"cut", openSslFile.left(8), "has 8 bytes instead of 16"},
        {"long", openSslFile + openSslFile, "has 32 bytes instead of 16"},
        {"end", badEnd, "does not decrypt to the 12 bytes"},
    };
    for (const auto &row : cases) {
        const QString path = in("%d/") + row.name;
        if (!row.content.isNull())
            writeFile(path, row.content);
        const QString fault = readCoefficientFile(path, 3, layered);
        EXPECT_TRUE(fault.startsWith(path) && fault.contains(row.says)) << fault.toStdString();
    }
}

TEST_F(DeliveryTest, SetsReplaceEachOtherAndAsManyStayAsAreWanted)
{
    ASSERT_EQ(deliver(1, false), "");
    EXPECT_EQ(entries("%d/out"), (QStringList{"1", "2", "manifest.json", "numbers.json"}));
    EXPECT_TRUE(deliver(2, false).endsWith("out: holds a delivery; --force replaces it"));
    chmod(in("%d/out").toLocal8Bit().constData(), 0750);
    const struct
    {
        int value, keep;
        std::vector<int> kept;
        const char *changes;
    } rows[] = {
        {2, 1, {1}, "1 of 2 files differ: 1"},       {2, 3, {2, 1}, "0 of 2 files differ"},
        {3, 3, {2, 2, 1}, "1 of 2 files differ: 1"}, {4, 2, {3, 2}, "1 of 2 files differ: 1"},
        {5, 0, {}, "1 of 2 files differ: 1"},
    };
    for (const auto &row : rows) {
        Delivery delivery;
        ASSERT_EQ(deliver(delivery, request(true, row.keep), row.value), "");
        EXPECT_EQ(delivery.changes(), row.changes);
        EXPECT_EQ(delivery.notes(), QStringList());
        EXPECT_EQ(delivery.keptName(), row.keep > 0 ? kept().value(0) : QString());
        EXPECT_EQ(delivered(), row.value);
        std::vector<int> values;
        for (const QString &name : kept())
            values.push_back(delivered(name));
        EXPECT_EQ(values, row.kept) << row.value;
    }
    EXPECT_EQ(entries(), QStringList("out")); // no lock, no mark
    struct stat status = {};
    EXPECT_EQ(stat(in("%d/out").toLocal8Bit().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0750U);
}

TEST_F(DeliveryTest, ADirectoryIsWhatAUserMeansByItsName)
{
    const QString before = QDir::currentPath();
    ASSERT_EQ(deliver(1), "");
    QFile::link("out", in("%d/link"));
    ASSERT_TRUE(QDir::setCurrent(m_dir.path()));
    int value = 1;
    for (const QString name : {"out/", "./out//", "link", "link/", "../%n/out", "new/deep/out"}) {
        Delivery delivery;
        Delivery::Request wanted = request();
        wanted.directory = QString(name).replace("%n", QDir(m_dir.path()).dirName());
        EXPECT_EQ(deliver(delivery, wanted, ++value), "") << name.toStdString();
        EXPECT_EQ(delivered(name.startsWith("new") ? "new/deep/out" : "out"), value);
    }
    QDir::setCurrent(before);
    EXPECT_EQ(entryKind(in("%d/link")), EntryKind::Link);
    // What is not committed leaves nothing, not even the directories above.
    {
        Delivery delivery;
        ASSERT_EQ(delivery.begin({in("%d/a/b/out"), false, 1, {}}), "");
        writeSet(delivery.path(), 1);
    }
    EXPECT_EQ(entries().filter("a"), QStringList());
}

TEST_F(DeliveryTest, WhatIsNoDeliveryIsRefusedByName)
{
    ASSERT_EQ(deliver(1), "");
    writeFile(in("%d/w.db"), "wall");
    const QByteArray out = QFile::encodeName(in("%d/out"));
    const QByteArray db = QFile::encodeName(in("%d/w.db"));
    const struct
    {
        const char *makes; ///< below %d/out; null: nothing
        std::function<void(const QByteArray &path)> make;
        const char *directory, *says;
    } rows[] = {
        {"notes.txt", [](const QByteArray &path) { writeFile(path, "x"); }, "%d/out",
         "/out/notes.txt: does not belong to a delivery"},
        {".hidden", [](const QByteArray &path) { writeFile(path, "x"); }, "%d/out",
         "/out/.hidden: does not belong"},
        {"sub", [](const QByteArray &path) { mkdir(path, 0777); }, "%d/out",
         "/out/sub: is not a regular file"},
        {"pipe", [](const QByteArray &path) { mkfifo(path, 0666); }, "%d/out",
         "/out/pipe: is not a regular file"},
        {"hard", [&](const QByteArray &path) { EXPECT_EQ(link(db, path), 0); }, "%d/out",
         "/out/hard: is the same file as "},
        {"soft", [&](const QByteArray &path) { EXPECT_EQ(symlink(db, path), 0); }, "%d/out",
         "/out/soft: is the same file as "},
        {nullptr, {}, "%d", "does not belong to a delivery"},
        {nullptr, {}, "%d/w.db", "/w.db: is not a directory"},
        {nullptr, {}, "%d/dangling", "dangling: is a link to nothing"},
        {nullptr, {}, "%d/fifo", "/fifo: is not a directory"},
        {nullptr, {}, "", "an empty name"},
        {nullptr, {}, ".", "is the current directory"},
        {nullptr, {}, "/", "is the root"},
        {nullptr, {}, "/proc", "is a mount point"},
    };
    EXPECT_EQ(symlink("nothing", QFile::encodeName(in("%d/dangling"))), 0);
    EXPECT_EQ(mkfifo(QFile::encodeName(in("%d/fifo")), 0666), 0);
    const QStringList all = entries();
    for (const auto &row : rows) {
        const QByteArray made = out + '/' + row.makes;
        if (row.makes)
            row.make(made);
        Delivery delivery;
        const QString fault = delivery.begin({in(row.directory), true, 1, {in("%d/w.db")}});
        EXPECT_TRUE(fault.contains(row.says)) << row.says << '\n' << fault.toStdString();
        if (row.makes && unlink(made) != 0)
            rmdir(made);
    }
    EXPECT_EQ(readFile(in("%d/w.db")), "wall");
    EXPECT_EQ(delivered(), 1);
    EXPECT_EQ(entries(), all);
    // What appears while the run is at work is refused as well.
    Delivery delivery;
    ASSERT_EQ(delivery.begin(request()), "");
    writeSet(delivery.path(), 2);
    Manifest manifest_ = manifest();
    ASSERT_EQ(delivery.seal(manifest_), "");
    writeFile(in("%d/out/late"), "x");
    EXPECT_TRUE(delivery.commit().contains("/out/late: does not belong"));
}

TEST_F(DeliveryTest, TwoRunsExcludeEachOther)
{
    ASSERT_EQ(deliver(1), "");
    {
        Delivery first;
        ASSERT_EQ(first.begin(request()), "");
        EXPECT_TRUE(deliver(2).endsWith("/out: another run is at work there"));
        expect(4, "restore %d/out", "another run");
        expect(4, "verify %d/out", "another run");
    }
    {
        DeliveredSet reader;
        ASSERT_EQ(reader.open(in("%d/out")), DeliveredSet::State::Ready);
        writeFile(in("%d/.out.seamrevise.lock"), ""); // one that a killed run has left
        DeliveredSet other;
        ASSERT_EQ(other.open(in("%d/out")), DeliveredSet::State::Ready);
        EXPECT_TRUE(deliver(2).contains("another run"));
    }
    EXPECT_EQ(deliver(2), "");
    EXPECT_EQ(entries().filter("lock"), QStringList());
}

/// What a run may leave behind that was killed: a whole set, old or new, and nothing that the next
/// run cannot clear up.
class KilledRuns : public DeliveryTest
{
protected:
    QString restore() const
    {
        Restoration restoration;
        restoration.run(in("%d/out"), QString());
        return restoration.message();
    }
    /// Sets 1 and 2, of which 1 is kept.
    void start() const
    {
        for (const QString &name : entries())
            QDir(in("%d/") + name).removeRecursively();
        ASSERT_EQ(deliver(1), "");
        ASSERT_EQ(deliver(2), "");
    }
    /// Afterwards, whatever happened.
    void expectWhole(int newValue, bool isRestored, const char *label) const
    {
        const int value = delivered();
        EXPECT_TRUE(value == 2 || value == newValue) << label << ' ' << value;
        for (const QString &name : kept())
            EXPECT_GT(delivered(name), 0) << label;
        // Whichever it is, the other one is there too.
        EXPECT_TRUE(!isRestored || kept().size() == 1) << label;
        EXPECT_EQ(deliver(9), "") << label;
        EXPECT_EQ(delivered(), 9) << label;
        EXPECT_EQ(kept().size(), 1) << label;
        EXPECT_EQ(delivered(kept().value(0)), value) << label;
        EXPECT_EQ(entries().size(), 2) << label << entries().join(' ').toStdString();
    }
};

TEST_F(KilledRuns, AreClearedUpWhicheverRenameTheyDiedAt)
{
    const struct
    {
        bool hasExchange, isRestored;
        int keep, deaths; ///< before and after each rename
    } rows[] = {
        {true, false, 0, 4},  {true, false, 1, 6},  {true, false, 2, 4}, {true, true, 0, 6},
        {false, false, 0, 8}, {false, false, 1, 6}, {false, true, 0, 6},
    };
    for (const auto &row : rows) {
        const auto run = [&](int last) {
            int calls = 0;
            setRenameCall([&](const char *from, const char *to, unsigned flag) {
                if (!row.hasExchange && flag != Rename_Replace)
                    return flag == Rename_Exchange ? EINVAL : ENOSYS;
                if (calls == last / 2 && last % 2 == 0)
                    raise(SIGKILL);
                const int error = renameat2(AT_FDCWD, from, AT_FDCWD, to, flag) == 0 ? 0 : errno;
                if (calls++ == last / 2)
                    raise(SIGKILL);
                return error;
            });
            return row.isRestored ? restore() : deliver(3, true, row.keep);
        };
        int deaths = 0;
        for (int code = 1; code != 0; ++deaths) {
            start();
            code = inProcess([&] { return run(deaths); });
            EXPECT_TRUE(code == 0 || code == 1000 + SIGKILL) << code;
            const QString label = QString("exchange %1, restore %2, keep %3, death %4")
                                      .arg(row.hasExchange)
                                      .arg(row.isRestored)
                                      .arg(row.keep)
                                      .arg(deaths);
            expectWhole(row.isRestored ? 1 : 3, row.isRestored, label.toUtf8().constData());
        }
        EXPECT_EQ(deaths - 1, row.deaths) << row.hasExchange << row.isRestored << row.keep;
    }
}

TEST_F(KilledRuns, AreClearedUpWhereverTheyDied)
{
    const int rounds = qEnvironmentVariableIsSet("SEAMREVISE_LONG_TESTS") ? 100 : 6;
    std::mt19937 random(1);
    for (const int signalNumber : {SIGKILL, SIGTERM, SIGINT}) {
        for (const bool isRestored : {false, true}) {
            for (int round = 0; round < rounds; ++round) {
                start();
                const int code = inProcess(
                    [&] {
                        handleInterruptions();
                        return isRestored ? restore() : deliver(3);
                    },
                    [&](pid_t child) {
                        usleep(random() % (isRestored ? 3000 : 12000));
                        kill(child, signalNumber);
                    });
                EXPECT_TRUE(code == 0 || code == 1000 + signalNumber || code == 128 + signalNumber)
                    << code;
                EXPECT_TRUE(code != 128 + signalNumber || entries().size() == 2)
                    << entries().join(' ').toStdString();
                expectWhole(isRestored ? 1 : 3, isRestored, isRestored ? "restored" : "delivered");
            }
        }
    }
}

TEST_F(DeliveryTest, TheProgramSaysThatItWasInterrupted)
{
    const Outcome outcome = shell("%p simulate %d/w.db --size 6000x4000 --grid 9x9 & sleep 0.5;"
                                  " kill -TERM $!; wait $!");
    EXPECT_EQ(outcome.code, 128 + SIGTERM);
    EXPECT_EQ(outcome.printed, "seamrevise: interrupted\n");
}

TEST_F(DeliveryTest, WhereOutputCannotBeWrittenTheOldSetStays)
{
    ASSERT_EQ(deliver(1), "");
    const auto expectFault = [&](const char *says, const std::function<QString()> &action) {
        const int code = inProcess([&] {
            const QString fault = action();
            return fault.contains(says) ? QString() : "it says: " + fault;
        });
        EXPECT_EQ(code, 0) << says;
        EXPECT_EQ(delivered(), 1) << says;
    };
    expectFault("manifest.json: File too large", [&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{200, 200}; // the coefficient files have 112 bytes
        setrlimit(RLIMIT_FSIZE, &limit);
        return deliver(2);
    });
    expectFault("/out.lost: No such file", [&] {
        Delivery delivery;
        delivery.begin({in("%d/out.lost"), false, 1, {}});
        Manifest manifest_ = manifest();
        delivery.seal(manifest_);
        removeTree(delivery.path());
        return delivery.commit();
    });
    if (geteuid() != 0)
        GTEST_SKIP() << "the rest needs root";
    // Named where it comes first: the test's directory may be closed to others higher up.
    expectFault(": Permission denied", [&] {
        chmod(QFile::encodeName(m_dir.path()), 0755);
        return seteuid(65534) == 0 ? deliver(2) : QString("seteuid");
    });
    // A full disk.
    const QByteArray disk = QFile::encodeName(in("%d/disk"));
    mkdir(disk, 0777);
    if (mount("tmpfs", disk, "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "the rest needs mount";
    Delivery::Request wanted = request();
    wanted.directory = in("%d/disk/out");
    const auto deliverThere = [&](int value) {
        Delivery delivery;
        return deliver(delivery, wanted, value);
    };
    EXPECT_EQ(deliverThere(5), "");
    {
        QFile filler(in("%d/disk/filler"));
        ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (filler.write(QByteArray(4096, 'x')) > 0)
            continue;
    }
    const QString fault = deliverThere(6);
    EXPECT_TRUE(fault.contains("No space left on device")) << fault.toStdString();
    EXPECT_EQ(delivered("disk/out"), 5);
    EXPECT_EQ(entries("%d/disk"), (QStringList{"filler", "out"}));
    EXPECT_EQ(umount2(disk, MNT_DETACH), 0);
}

TEST_F(DeliveryTest, AFileThatIsTouchedAfterItWasReadBackIsNotDelivered)
{
    const struct
    {
        const char *what;
        std::function<void(const QString &)> touch;
    } rows[] = {
        {"longer", [](const QString &path) { writeFile(path, readFile(path) + 'x'); }},
        {"other bytes", [](const QString &path) { writeFile(path, QByteArray(112, 'x')); }},
        {"gone", [](const QString &path) { QFile::remove(path); }},
        {"another file",
         [](const QString &path) {
             QFile::copy(path, path + '~');
             std::rename((path + '~').toStdString().c_str(), path.toStdString().c_str());
         }},
        {nullptr, [](const QString &) {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what ? row.what : "none");
        Delivery delivery;
        ASSERT_EQ(delivery.begin(request(true)), "");
        const QString path = delivery.path() + "/1";
        writeSet(delivery.path(), 5);
        EXPECT_EQ(delivery.finishFile("1", sha256OfFile(path), stampOf(path)), "");
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // a file's clock ticks slowly
        row.touch(path);
        Manifest sealed = manifest();
        EXPECT_EQ(delivery.seal(sealed),
                  row.what ? path + ": was touched after it was read back" : "");
    }
}

TEST_F(DeliveryTest, ADirectoryThatDisappearsMeanwhileIsMadeAnew)
{
    ASSERT_EQ(deliver(1), "");
    Delivery delivery;
    ASSERT_EQ(delivery.begin(request()), "");
    writeSet(delivery.path(), 2);
    Manifest manifest_ = manifest();
    ASSERT_EQ(delivery.seal(manifest_), "");
    removeTree(in("%d/out"));
    EXPECT_EQ(delivery.commit(), "");
    EXPECT_EQ(delivered(), 2);
    EXPECT_EQ(delivery.keptName() + delivery.changes(), "");
    EXPECT_EQ(entries(), QStringList("out"));
}

TEST_F(DeliveryTest, ADamagedManifestIsFound)
{
    Manifest whole = manifest(2);
    whole.partitions[1].isCorrected = true;
    whole.partitions[1].zone = NQRect(9, 19, 16, 22);
    whole.partitions[1].storedSha256 = "ab";
    whole.partitions[1].revision = 3;
    whole.partitions[1].station = "me@here";
    whole.files.push_back({"1", qint64{1} << 40, "cd"});
    const QByteArray text = manifestText(whole);
    Manifest read;
    ASSERT_EQ(parseManifest(text, read), "");
    EXPECT_EQ(manifestText(read), text);
    const QByteArray checksum
        = QCryptographicHash::hash(text.left(text.lastIndexOf(",\n")), QCryptographicHash::Sha256);
    EXPECT_TRUE(text.endsWith(",\n  \"sha256\": \"" + checksum.toHex() + "\"\n}\n"));
    for (int i = 0; i < text.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray flipped = text;
            flipped[i] = static_cast<char>(flipped[i] ^ (1 << bit));
            EXPECT_NE(parseManifest(flipped, read), "") << i;
        }
        EXPECT_NE(parseManifest(text.left(i), read), "") << i;
    }
    // Whole, but nothing that a run writes.
    Manifest strange = whole;
    strange.files[0].name = "../1";
    EXPECT_NE(parseManifest(manifestText(strange), read), "");
    strange = whole;
    strange.partitions[0].rect = NQRect(10, 20, 16, 21);
    EXPECT_NE(parseManifest(manifestText(strange), read), "");
}

TEST_F(DeliveryTest, VerifyFindsWhatIsNotAsItWasDelivered)
{
    ASSERT_EQ(deliver(1), "");
    expect(0, "verify %d/out", "differences  0");
    expect(0, "verify %d/out/ -q");
    expect(3, "verify %d/none", "no such directory");
    expect(3, "verify %d", "has no manifest.json");
    for (const QString &name : entries("%d/out")) {
        const QString path = in("%d/out/") + name;
        const QByteArray good = readFile(path);
        QByteArray flipped = good;
        flipped[good.size() / 2] = static_cast<char>(flipped[good.size() / 2] ^ 1);
        for (const QByteArray &bad : {flipped, good.left(good.size() - 1), good + '\n'}) {
            writeFile(path, bad);
            EXPECT_NE(expect(1, "verify %d/out").find(name.toStdString() + ": "),
                      std::string::npos);
        }
        QFile::remove(path);
        expect(name == "manifest.json" ? 3 : 1, "verify %d/out");
        QFile::remove(path);
        writeFile(path, good);
    }
    writeFile(in("%d/out/more"), "x");
    mkdir(QFile::encodeName(in("%d/out/2.d")), 0777);
    expect(1, "verify %d/out", "more: does not belong");
    const QJsonObject document
        = QJsonDocument::fromJson(QByteArray::fromStdString(expect(1, "verify %d/out --json -")))
              .object();
    EXPECT_EQ(document.value("schema").toString(), "seamrevise/1");
    EXPECT_EQ(document.value("findings").toArray().size(), 2);
    EXPECT_EQ(document.value("files").toArray().size(), 3);
    // A set whose files are those of its manifest and yet not those of its rectangles.
    Delivery delivery;
    ASSERT_EQ(delivery.begin({in("%d/odd"), false, 1, {}}), "");
    writeFile(delivery.path() + "/1", QByteArray(112, 'x'));
    Manifest odd = manifest();
    ASSERT_EQ(delivery.seal(odd), "");
    ASSERT_EQ(delivery.commit(), "");
    const std::string printed = expect(1, "verify %d/odd", "1: does not decrypt to the 108 bytes");
    EXPECT_NE(printed.find("does not name its file 2"), std::string::npos) << printed;
}

TEST_F(DeliveryTest, VerifyHoldsASetAgainstItsDatabase)
{
    makeWall();
    for (const int layers : {0, 2}) {
        SqlScreenStore store;
        ASSERT_TRUE(store.open(in("%d/w.db")));
        Manifest stored = manifest(layers);
        stored.screen = store.layout().screen;
        stored.partitions.clear();
        std::vector<StoredZone> zones;
        ASSERT_TRUE(layers > 0 ? store.listLayeredZones(layers, zones) : store.listZones(zones));
        const QString table = layers > 0 ? "layered_coefficients" : "coefficients";
        for (const auto &[number, rect] : store.layout().partitions) {
            ManifestPartition partition;
            partition.number = number;
            partition.rect = rect;
            const QByteArray data
                = execute(in("%d/w.db"),
                          QString("SELECT data FROM %1 WHERE number = %2").arg(table).arg(number))
                      .toByteArray();
            partition.isCorrected = !data.isEmpty();
            partition.zone = zoneOf(store.layout(), number).rect;
            partition.storedSha256
                = QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex();
            stored.partitions.push_back(partition);
        }
        const auto differences = [&] {
            SqlScreenStore changed;
            QString fault;
            EXPECT_TRUE(changed.open(in("%d/v.db")));
            QStringList messages;
            for (const Difference &difference : verifyStored(stored, changed, fault))
                messages.push_back(difference.message);
            EXPECT_EQ(fault, "");
            return messages.join('|');
        };
        const std::pair<QString, const char *> rows[] = {
            {"SELECT 1", ""},
            {"UPDATE " + table
                 + " SET data = CAST(X'0102' || substr(data, 3) AS BLOB)"
                   " WHERE number = 2",
             "partition 2: other coefficients are stored now"},
            {"DELETE FROM " + table + " WHERE number = 3",
             "partition 3: its coefficients are no longer stored"},
            {"UPDATE " + table + " SET number = 5 WHERE number = 4",
             "partition 4: its coefficients are no longer stored|partition 5: it has"
             " coefficients now"},
            {"UPDATE partitions SET last_col = last_col + 1 WHERE number = 6",
             "partition 6: lies elsewhere in the database now"},
        };
        for (const auto &[sql, says] : rows) {
            QFile::remove(in("%d/v.db"));
            ASSERT_TRUE(QFile::copy(in("%d/w.db"), in("%d/v.db")));
            execute(in("%d/v.db"), sql);
            EXPECT_EQ(differences(), says);
        }
    }
    ASSERT_EQ(deliver(1), "");
    expect(1, "verify %d/out %d/w.db", "the database has another screen");
    expect(3, "verify %d/out %d/none.db", "none.db");
}

TEST_F(DeliveryTest, AgreedLimitsAreHeldOrNot)
{
    const QByteArray numbers = R"({"seams": [
        {"disagreement": {"worst": -0.04}, "step": {"after": {"worst": 0.003}}},
        {"disagreement": {"worst": 0.01}, "step": {"after": {"worst": 0.005}}},
        {"disagreement": {"worst": null}, "step": {"after": null}}], "changes": {"above_cap": 2}})";
    const struct
    {
        const char *limits, *fault, *verdicts;
    } rows[] = {
        {R"({"step_after": 0.005, "disagreement": 0.04, "above_cap": 2})", "", "+++"},
        {R"({"step_after": 0.0049, "disagreement": 0.039, "above_cap": 1})", "", "---"},
        {R"({"above_cap": 1})", "", "-"},
        {"{}", "", ""},
        {R"({"step": 1})", "there is no limit step; there are step_after,", ""},
        {R"({"step_after": "1"})", "step_after: the limit is no number", ""},
        {R"({"step_after": -1})", "step_after: the limit is no number", ""},
        {"[1]", "is no JSON object", ""},
        {"{", "is no JSON object", ""},
    };
    for (const auto &row : rows) {
        std::vector<LimitVerdict> verdicts;
        const QString fault = checkLimits(row.limits, numbers, verdicts);
        EXPECT_EQ(fault.isEmpty(), row.fault[0] == '\0') << row.limits;
        EXPECT_TRUE(fault.contains(row.fault)) << fault.toStdString();
        std::string text;
        for (const LimitVerdict &verdict : verdicts)
            text += verdict.holds() ? '+' : '-';
        EXPECT_EQ(text, row.verdicts) << row.limits;
    }
    Delivery delivery;
    ASSERT_EQ(delivery.begin(request()), "");
    writeSet(delivery.path(), 1);
    ASSERT_EQ(delivery.addFile("numbers.json", numbers), "");
    Manifest manifest_ = manifest();
    ASSERT_EQ(delivery.seal(manifest_), "");
    ASSERT_EQ(delivery.commit(), "");
}

TEST_F(DeliveryTest, TheLimitsOfACommandDecideItsCode)
{
    ASSERT_EQ(deliver(1), ""); // its numbers.json has no number that a limit is about
    writeFile(in("%d/l.json"), R"({"step_after": 0})");
    expect(0, "verify %d/out --limits %d/l.json", "step_after nothing to measure");
    expect(3, "verify %d/out --limits %d/none", "none");
    writeFile(in("%d/l.json"), R"({"steps": 0})");
    expect(3, "verify %d/out --limits %d/l.json", "l.json: there is no limit steps");
}

/// A set of two layers, as files or as tables; one value of partition 2 may differ.
QString deliverLayers(const QString &dir, bool isTable, Manifest manifest, qint32 changed)
{
    Delivery delivery;
    QString fault = delivery.begin({dir, true, 0, {}});
    if (!fault.isEmpty())
        return fault;
    // Pixel p of the screen has the values 100 p to 100 p + 5 and the words 2 p and 2 p + 1.
    const auto value = [&](int column, int row, int index, int layers) {
        const int pixel = row * 6 + column;
        const bool isChanged = layers == 6 && column == 4 && row == 1 && index == 2;
        return isChanged ? changed : pixel * (layers == 6 ? 100 : 2) + index;
    };
    const char *const suffixes[] = {"_m", "_zip"};
    for (const int perPixel : {6, 2}) {
        std::vector<qint32> screen;
        std::vector<qint32> parts[2];
        for (int row = 0; row < 2; ++row) {
            for (int column = 0; column < 6; ++column) {
                for (int index = 0; index < perPixel; ++index) {
                    screen.push_back(value(column, row, index, perPixel));
                    parts[column / 3].push_back(screen.back());
                }
            }
        }
        const QString tables[] = {"/coefficients.npy", "/packed.bin"};
        const int kind = perPixel == 6 ? 0 : 1;
        const auto send = [&](const BlockSink &sink) { return sendLittleEndian(screen, sink); };
        if (isTable)
            fault = kind == 0 ? writeNpy(delivery.path() + tables[0], "<i4", {2, 6, 6}, send)
                              : writeChecked(delivery.path() + tables[1], send);
        for (int part = 0; part < 2 && !isTable; ++part)
            writeCoefficients(delivery.path() + QString("/%1%2").arg(part + 1).arg(suffixes[kind]),
                              parts[part]);
    }
    fault = delivery.seal(manifest);
    return fault.isEmpty() ? delivery.commit() : fault;
}

TEST_F(DeliveryTest, CompareSaysHowMuchAndWhere)
{
    ASSERT_EQ(deliverLayers(in("%d/files"), false, manifest(2), 1002), "");
    ASSERT_EQ(deliverLayers(in("%d/table"), true, manifest(2, true), 1002), "");
    ASSERT_EQ(deliverLayers(in("%d/other"), true, manifest(2, true), -2), "");
    for (const char *name : {"files", "table", "other"})
        expect(0, QString("verify %d/") + name);
    expect(0, "compare %d/files %d/table", "0 of 2 differ");
    expect(1, "compare %d/files %d/other",
           "partition 2: 1 pixels, 1 values differ, largest 1004 at row 21, column 14, value 3,"
           " mean 1004\npartitions   1 of 2 differ");
    const QJsonObject document
        = QJsonDocument::fromJson(
              QByteArray::fromStdString(expect(1, "compare %d/files %d/other --json -")))
              .object();
    EXPECT_EQ(document.value("compared").toArray()[1].toObject(),
              QJsonDocument::fromJson(R"({"partition": 2, "pixels": 1, "values": 1, "mean": 1004,
                  "packed_words": 0, "largest": 1004, "row": 21, "column": 14, "value": 3})")
                  .object());
    ASSERT_EQ(deliver(1), "");
    expect(1, "compare %d/out %d/files", "different kinds of coefficients: 0 and 2 layers");
    expect(3, "compare %d/out %d/none", "none");
    ASSERT_EQ(deliver(3), "");
    expect(1, "compare %d/out %d/" + kept()[0], "6 pixels, 54 values differ, largest 2 at row 20");
    QFile::remove(in("%d/out/1"));
    expect(3, "compare %d/out %d/files/../out", "1: the file is missing");
}

TEST_F(DeliveryTest, ShowPrintsAndExportsOnePartition)
{
    ASSERT_EQ(deliverLayers(in("%d/files"), false, manifest(2), 1002), "");
    ASSERT_EQ(deliverLayers(in("%d/table"), true, manifest(2, true), 1002), "");
    std::string text;
    for (const QString name : {"files", "table"}) {
        const std::string printed = expect(0, "show --text %d/" + name + " 2");
        EXPECT_EQ(printed.substr(0, 28), "\n300,301,302,303,304,305,\n40");
        expect(0, "show %d/" + name + " 2", "rows 20 to 21, columns 13 to 15");
        expect(0, "show %d/" + name + " 2 --npy %d/" + name + ".npy");
        EXPECT_EQ(text.empty() || text == printed, true);
        text = printed;
    }
    EXPECT_EQ(readFile(in("%d/files.npy")), readFile(in("%d/table.npy")));
    EXPECT_TRUE(
        readFile(in("%d/files.npy")).contains("'<i4', 'fortran_order': False, 'shape': (2, 3, 6)"));
    ASSERT_EQ(deliver(1), "");
    expect(0, "show %d/out 1 --npy %d/single.npy");
    EXPECT_TRUE(readFile(in("%d/single.npy")).endsWith(QByteArray("\1\0", 2).repeated(54)));
    expect(2, "show %d/out 3", "has no partition 3");
    expect(2, "show %d/out 1 --text --npy x", "exclude");
    expect(4, "show %d/out 1 --npy %d/out/x.npy", "lies inside");
    expect(3, "show %d/none 1", "none");
    EXPECT_EQ(entries("%d/out").size(), 4);
}

TEST_F(DeliveryTest, RestorePutsAKeptSetBack)
{
    expect(3, "restore %d/out", "there is no kept set");
    for (int value = 1; value <= 3; ++value)
        ASSERT_EQ(deliver(value, true, 5), "");
    expect(0, "restore %d/out", "restored");
    EXPECT_EQ(delivered(), 2);
    expect(0, "restore %d/out", "kept");
    EXPECT_EQ(delivered(), 3);
    const QString oldest = kept().last();
    expect(0, "restore %d/out --from " + oldest.mid(4));
    EXPECT_EQ(delivered(), 1);
    EXPECT_EQ(kept().size(), 2);
    expect(3, "restore %d/out --from 20200101-000000", "is no kept set; there are out.");
    expect(3, "restore %d/out --from w.db", "is no kept set");
    // A directory that is gone, and a set that is not whole.
    QDir(in("%d/out")).removeRecursively();
    expect(0, "restore %d/out");
    EXPECT_EQ(kept().size(), 1);
    const int value = delivered();
    QFile::remove(in("%d/") + kept()[0] + "/2");
    expect(3, "restore %d/out", "is not whole: 2: is missing");
    EXPECT_EQ(delivered(), value);
    EXPECT_EQ(entries().size(), 2);
}

TEST_F(DeliveryTest, SingleFilesReplaceRegularFilesOnly)
{
    writeFile(in("%d/old"), "old");
    EXPECT_EQ(symlink("old", QFile::encodeName(in("%d/link"))), 0);
    EXPECT_EQ(link(QFile::encodeName(in("%d/old")), QFile::encodeName(in("%d/hard"))), 0);
    EXPECT_EQ(mkfifo(QFile::encodeName(in("%d/pipe")), 0666), 0);
    mkdir(QFile::encodeName(in("%d/dir")), 0777);
    const struct
    {
        const char *path, *says;
        QStringList inputs;
    } rows[] = {
        {"%d/old", "/old: is the same file as ", {in("%d/hard")}},
        {"%d/link", "/old: is the same file as ", {in("%d/hard")}},
        {"%d/pipe", "/pipe: is not a regular file", {}},
        {"%d/dir", "/dir: is a directory", {}},
        {"%d/none/x", "/none/x: there is no directory ", {}},
        {"%d/link", "", {}},
        {"%d/new", "", {}},
    };
    for (const auto &row : rows) {
        WholeFile file;
        QString fault = file.begin(in(row.path), row.inputs);
        if (fault.isEmpty())
            fault = writeSynced(file.path(), "new");
        if (fault.isEmpty())
            fault = file.commit();
        EXPECT_EQ(fault.isEmpty(), row.says[0] == '\0') << fault.toStdString();
        EXPECT_TRUE(fault.contains(row.says)) << fault.toStdString();
    }
    EXPECT_EQ(readFile(in("%d/hard")), "old");
    EXPECT_EQ(readFile(in("%d/link")), "new");
    EXPECT_EQ(entries(), (QStringList{"dir", "hard", "link", "new", "old", "pipe"}));
}

TEST_F(DeliveryTest, DumpsThatAreNotWholeAreFound)
{
    const struct
    {
        const char *content;
        DumpShape shape;
        bool isWhole;
    } rows[] = {
        {"\r\n1,-2,\r\n3,4,\r\n", {2, 2}, true},
        {"\r\n1\r\n255\r\n", {2, 0}, true},
        {"\r\n", {0, 9}, true},
        {"", {0, 9}, false},
        {"\r\n1,2,\r\n3,", {2, 2}, false},
        {"\r\n1,2,\r\n3,4,", {2, 2}, false},
        {"\r\n1,2,\r\n3,4,\r", {2, 2}, false},
        {"\r\n1,2,\r\n3,\r\n", {2, 2}, false},
        {"\r\n1,2,\r\n3,4\r\n", {2, 2}, false},
        {"\r\n1,2,\r\n3,4,5\r\n", {2, 2}, false},
        {"\r\n1,2,\r\n3,4,\n", {2, 2}, false},
        {"\r\n1,2,\r\n", {2, 2}, false},
        {"\r\n1,2,\r\n3,4,\r\n5,6,\r\n", {2, 2}, false},
        {"1,2,\r\n3,4,\r\n", {2, 2}, false},
        {"\r\n1,,\r\n3,4,\r\n", {2, 2}, false},
        {"\r\n1,x,\r\n3,4,\r\n", {2, 2}, false},
        {"\r\n1\r\n\r\n", {2, 0}, false},
    };
    const QString path = in("%d/dump.txt");
    EXPECT_TRUE(dumpFault(path, {0, 9}).contains("missing"));
    for (const auto &row : rows) {
        writeFile(path, row.content);
        const QString fault = dumpFault(path, row.shape);
        EXPECT_EQ(fault.isEmpty(), row.isWhole) << row.content;
        EXPECT_TRUE(row.isWhole || fault.startsWith(path)) << fault.toStdString();
    }
}

} // namespace
