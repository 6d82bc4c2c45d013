// Shows, under ThreadSanitizer, what the library's lock guards change:
//   guarded      data written and read only under AlgoLogic guards: no report;
//   unannotated  the same traffic under bare Qt lockers: reported, because
//                the sanitizer cannot see inside an uninstrumented Qt;
//   race         one writer skips the lock: reported, the guards hide nothing.
// The exit status and the sanitizer's report decide the test (see CMake).

#include "common/locking.h"

#include <QString>

#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 20000;

QReadWriteLock g_lock(QReadWriteLock::Recursive);
QMutex g_mutex;
long g_counter = 0;
QString g_text;
long g_mutexCounter = 0;

void guardedWriter()
{
    for (int i = 0; i < kRounds; ++i) {
        {
            AlgoLogic::WriteLocker outer(&g_lock);
            AlgoLogic::WriteLocker inner(&g_lock); // the content lock is recursive
            ++g_counter;
            g_text = QString::number(g_counter);
        }
        {
            AlgoLogic::ReadLocker reader(&g_lock);
            AlgoLogic::ReadLocker again(&g_lock);
            if (g_text.isNull() && g_counter > 0)
                std::abort();
        }
        AlgoLogic::MutexLocker locker(&g_mutex);
        ++g_mutexCounter;
    }
}

void unannotatedWriter()
{
    for (int i = 0; i < kRounds; ++i) {
        QWriteLocker locker(&g_lock);
        ++g_counter;
        g_text = QString::number(g_counter);
    }
}

void racyWriter()
{
    for (int i = 0; i < kRounds; ++i)
        ++g_counter; // deliberately without the lock
}

} // namespace

int main(int argc, char** argv)
{
    const char* mode = argc > 1 ? argv[1] : "";
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        if (std::strcmp(mode, "guarded") == 0)
            threads.emplace_back(guardedWriter);
        else if (std::strcmp(mode, "unannotated") == 0)
            threads.emplace_back(unannotatedWriter);
        else if (std::strcmp(mode, "race") == 0)
            threads.emplace_back(t == 0 ? racyWriter : guardedWriter);
        else {
            std::fprintf(stderr, "usage: %s guarded|unannotated|race\n", argv[0]);
            return 2;
        }
    }
    for (std::thread& thread : threads)
        thread.join();
    std::printf("counter %ld, mutex counter %ld\n", g_counter, g_mutexCounter);
    return 0;
}
