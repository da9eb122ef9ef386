// Commits a package and can be told to die just before its n-th call that changes the disk.

#include "imf/package/Deliveries.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

long callsLeft = -1;

void count()
{
    if (callsLeft > 0 && --callsLeft == 0)
        ::raise(SIGKILL);
}

} // namespace

#define STAND_IN extern "C" __attribute__((visibility("default")))

STAND_IN int fsync(int descriptor)
{
    count();
    return int(::syscall(SYS_fsync, descriptor));
}

STAND_IN ssize_t write(int descriptor, const void* bytes, size_t size)
{
    count();
    return ::syscall(SYS_write, descriptor, bytes, size);
}

STAND_IN int rename(const char* from, const char* to) noexcept
{
    count();
    return int(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

STAND_IN int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept
{
    count();
    return int(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

STAND_IN int unlink(const char* path) noexcept
{
    count();
    return int(::syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

STAND_IN int rmdir(const char* path) noexcept
{
    count();
    return int(::syscall(SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR));
}

STAND_IN int mkdir(const char* path, mode_t mode) noexcept
{
    count();
    return int(::syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}

/// committer first|second|recover FOLDER TRACKS CALL
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const deliveries::Tracks tracks = deliveries::load(arguments[3]);
    callsLeft = arguments[4].toLong();
    if (arguments[1] == QLatin1String("recover"))
        return desk::imf::recoverFolder(arguments[2]) ? 0 : 1;
    const bool isFirst = arguments[1] == QLatin1String("first");
    const desk::Status done =
        isFirst ? deliveries::commitFirst(arguments[2], tracks) : deliveries::commitSecond(arguments[2], tracks);
    if (!done)
        std::fprintf(stderr, "%s\n", qPrintable(done.error().sentence()));
    return done ? 0 : 1;
}
