#include "process/interruption.h"

#include <QFile>

#include <algorithm>
#include <atomic>
#include <climits>
#include <csignal>

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

// The handler removes files itself, while the thread that would write more of them stands still in
// it. So it may not allocate: names lie in fixed places, and directories are read by the kernel's
// own call.

namespace seamrevise
{

namespace
{

constexpr int slotCount = 32;
constexpr int exitCodeOfSignal = 128; ///< plus the signal's number, as shells have it

struct Slot
{
    char path[PATH_MAX]; ///< empty: not used
    Unfinished::What what;
};

// A signal handler is handed nothing, and reaches what is global only.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
Slot unfinished[slotCount];
std::atomic<int> heldCount{0};
volatile std::sig_atomic_t waitingSignal = 0;
pthread_t mainThread;
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

/// Removes the files that one pass over an open directory meets; how many.
int removeOnce(int directory)
{
    int removed = 0;
    alignas(dirent64) char block[4096];
    ssize_t bytes = 0;
    while ((bytes = getdents64(directory, block, sizeof(block))) > 0) {
        for (ssize_t offset = 0; offset < bytes;) {
            const auto *const entry = reinterpret_cast<const dirent64 *>(block + offset);
            removed += unlinkat(directory, entry->d_name, 0) == 0 ? 1 : 0; // not . and ..
            offset += entry->d_reclen;
        }
    }
    return removed;
}

/// A pass may miss names while others are removed.
void removeFiles(int directory)
{
    while (removeOnce(directory) > 0)
        lseek(directory, 0, SEEK_SET);
}

void removeUnfinished(const Slot &slot)
{
    if (slot.what == Unfinished::Files) {
        if (unlink(slot.path) == 0)
            return;
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): as it is declared
        const int directory = open(slot.path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (directory >= 0) {
            removeFiles(directory);
            close(directory);
        }
    }
    rmdir(slot.path);
}

[[noreturn]] void endProcess(int signalNumber)
{
    // The latest first: what lies in a directory before the directory.
    for (int slot = slotCount - 1; slot >= 0; --slot) {
        if (unfinished[slot].path[0] != '\0')
            removeUnfinished(unfinished[slot]);
    }
    const char text[] = "seamrevise: interrupted\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, sizeof(text) - 1);
    _exit(exitCodeOfSignal + signalNumber);
}

extern "C" void onSignal(int signalNumber)
{
    if (pthread_equal(pthread_self(), mainThread) == 0)
        pthread_kill(mainThread, signalNumber);
    else if (heldCount > 0)
        waitingSignal = signalNumber;
    else
        endProcess(signalNumber);
}

} // namespace

void handleInterruptions()
{
    mainThread = pthread_self();
    for (const int signalNumber : {SIGINT, SIGTERM}) {
        struct sigaction action = {};
        sigaction(signalNumber, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue;
        action = {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART;
        sigaction(signalNumber, &action, nullptr);
    }
}

Unfinished::Unfinished(const QString &path, What what)
{
    const Uninterrupted held;
    const QByteArray name = QFile::encodeName(path);
    for (int slot = 0; slot < slotCount && m_slot < 0; ++slot) {
        if (unfinished[slot].path[0] == '\0' && name.size() < PATH_MAX) {
            unfinished[slot].what = what;
            std::copy_n(name.constData(), name.size() + 1, unfinished[slot].path);
            m_slot = slot;
        }
    }
}

Unfinished::~Unfinished()
{
    const Uninterrupted held;
    if (m_slot >= 0)
        unfinished[m_slot].path[0] = '\0';
}

Uninterrupted::Uninterrupted()
{
    ++heldCount;
}

Uninterrupted::~Uninterrupted()
{
    if (--heldCount == 0 && waitingSignal != 0)
        endProcess(waitingSignal);
}

} // namespace seamrevise
