#pragma once

#include "desk/base/Result.h"
#include "desk/media/Sequence.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QThreadPool>

namespace desk::app
{

/// Opens media beside the user-interface thread, where it answers. Waits in its destructor for what is being opened.
class MediaLoader : public QObject
{
    Q_OBJECT

public:
    explicit MediaLoader(QObject* parent = nullptr);
    ~MediaLoader() override;

    void open(const QStringList& paths);

    /// Files asked for and not answered yet.
    int pending() const { return m_pending; }

signals:
    void opened(const desk::media::Sequence& sequence);
    void failed(const desk::Error& error);
    /// After each answer, and when files are asked for.
    void pendingChanged(int files);

private:
    void finish(const Result<media::Sequence>& sequence);

    QThreadPool m_pool;
    int m_pending = 0;
};

/// Small pictures of sequences, decoded beside the user-interface thread and kept as files. A sequence without a
/// picture that can be read has none.
class Thumbnails : public QObject
{
    Q_OBJECT

public:
    static constexpr int width = 128;
    static constexpr int height = 72;

    /// @param folder where they are kept; made when first needed.
    explicit Thumbnails(const QString& folder, QObject* parent = nullptr);
    ~Thumbnails() override;

    /// Null while there is none; it is then made, and ready() tells.
    QImage find(const QString& id, const QString& path);
    /// The file may have changed.
    void forget(const QString& id);

signals:
    void ready(const QString& id);

private:
    QString m_folder;
    QHash<QString, QImage> m_images;
    QSet<QString> m_wanted;
    QThreadPool m_pool;
};

} // namespace desk::app
