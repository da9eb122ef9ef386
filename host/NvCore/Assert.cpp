#include "NvCore/Assert.h"

#include <QMutex>
#include <QMutexLocker>

#include <utility>

namespace
{
struct InstalledHandler {
    QMutex mutex;
    NvAssertHandler handler;
};

InstalledHandler& installed()
{
    static InstalledHandler instance;
    return instance;
}

QByteArray baseName(const QByteArray& fileName)
{
    const QByteArray name = fileName.mid(qMax(fileName.lastIndexOf('/'), fileName.lastIndexOf('\\')) + 1);
    return name.left(name.indexOf('.'));
}

void defaultHandler(const QByteArray& expression, const QByteArray& source)
{
#if defined(STRATACUT_DEBUG)
    qFatal("Assertion failed in %s: %s", source.constData(), expression.constData());
#else
    Q_UNUSED(expression);
    Q_UNUSED(source);
#endif
}
} // namespace

NvAssertHandler nvSetAssertHandler(NvAssertHandler handler)
{
    InstalledHandler& place = installed();
    const QMutexLocker guard(&place.mutex);
    return std::exchange(place.handler, std::move(handler));
}

void nvAssertFailed(const char* expression, const char* fileName)
{
    NvAssertHandler handler;
    {
        InstalledHandler& place = installed();
        const QMutexLocker guard(&place.mutex);
        handler = place.handler;
    }
    (handler ? handler : NvAssertHandler(defaultHandler))(expression, baseName(fileName));
}
