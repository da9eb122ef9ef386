#include "NvCore/NvText.h"

#include <QCoreApplication>
#include <QReadWriteLock>

#include <utility>

namespace
{
struct InstalledLookup {
    QReadWriteLock lock;
    NvTextTranslation::Lookup lookup;
};

InstalledLookup& installed()
{
    static InstalledLookup instance;
    return instance;
}
} // namespace

void NvTextTranslation::install(Lookup lookup)
{
    InstalledLookup& place = installed();
    const QWriteLocker guard(&place.lock);
    place.lookup = std::move(lookup);
}

QString NvTextTranslation::translate(const QByteArray& key)
{
    Lookup lookup;
    {
        // Copied, so that a lookup may itself translate or install.
        InstalledLookup& place = installed();
        const QReadLocker guard(&place.lock);
        lookup = place.lookup;
    }
    const QString found = lookup ? lookup(key) : QString();
    return found.isNull() ? QCoreApplication::translate(Context, key.constData()) : found;
}

QString NvText::toQString() const
{
    // Qt looks an empty source text up like any other and would answer the header of a translation file.
    return m_key.isEmpty() ? QString() : NvTextTranslation::translate(m_key);
}

NvText stx_func(const char* key)
{
    return NvText(key);
}
