#pragma once

#include "desk/base/Rational.h"
#include "desk/base/Result.h"
#include "desk/media/Sequence.h"

#include <QMap>
#include <QObject>
#include <QStringList>

#include <optional>

namespace desk::services
{

/// What the bin remembers of one audio track.
struct BinTrack {
    /// "A1", "A2", ...: the number is the track's place in the sequence.
    QString name;
    QString label;
    QString title;
    /// As in AudioTrackInfo.
    QString language;

    /// What stands for the track in a list of sources: "A1 Mono Dialogue".
    QString entry() const { return QStringLiteral("%1 %2 %3").arg(name, label, title); }
};

/// What the bin remembers of a sequence, so that questions about it are answered without opening the file.
struct BinItem {
    QString id;
    QString name;
    /// Absolute.
    QString path;
    /// Invalid for a sequence without picture.
    Rational frameRate;
    qint64 frames = 0;
    int width = 0;
    int height = 0;
    QVector<BinTrack> audio;
};

/// What the bin remembers of a sequence that was opened.
BinItem binItem(const media::Sequence& sequence);

/// The sequences of the open project, kept in a JSON file. User-interface thread.
class MediaLibrary : public QObject
{
    Q_OBJECT

public:
    /// An empty name keeps the bin in memory only. A file that cannot be read is told in takeNotices() and not
    /// overwritten.
    explicit MediaLibrary(const QString& file = {}, QObject* parent = nullptr);

    QString projectName() const;
    QString binName() const;

    /// Adds the sequence, or renews what is known of one that has the same identifier.
    void add(const media::Sequence& sequence);
    void remove(const QString& id);

    const QMap<QString, BinItem>& items() const { return m_items; }

    std::optional<BinItem> find(const QString& id) const;
    /// True when the bin holds the sequence and its file is there.
    bool exists(const QString& id) const;
    /// Writes the file once more where the last change could not be written.
    void keep();
    QStringList takeNotices();

signals:
    /// Something about the sequence has changed, or it has come or gone.
    void changed(const QString& id);

private:
    void load();
    void save();

    QString m_file;
    QMap<QString, BinItem> m_items;
    QStringList m_notices;
    /// The file holds the items.
    bool m_isWritten = true;
};

} // namespace desk::services
