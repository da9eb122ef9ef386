#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/mxf/Klv.h"
#include "desk/imf/mxf/TrackFileReader.h"
#include "imf/support/Programs.h"
#include "imf/support/TinyTracks.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <random>

using namespace desk;
using namespace desk::imf;

namespace
{

void put(QByteArray& bytes, qint64 at, const QByteArray& patch)
{
    bytes.replace(int(at), patch.size(), patch);
}

/// The place of the `n`th item with this key, its first `length` bytes compared.
int keyAt(const QByteArray& bytes, const Ul& key, int n = 0, int length = 16)
{
    int at = -1;
    for (int i = 0; i <= n; ++i)
        at = bytes.indexOf(key.toBytes().left(length), at + 1);
    return at;
}

Ul setKey(int number)
{
    return {0x060e2b3402530101, 0x0d01010101010000 | std::uint64_t(number) << 8};
}

/// The value of a local item: after its tag and length, in the set that starts at `set`.
int itemAt(const QByteArray& bytes, int set, const char* tag)
{
    return bytes.indexOf(QByteArray::fromHex(tag), set + 20) + 4;
}

/// Every way of asking a file: the first error of opening, frames, samples and descriptor.
QString complaint(const QString& path)
{
    auto track = readTrackFile(path);
    if (!track)
        return track.error().sentence();
    track->descriptorXml();
    const qint64 duration = std::min<qint64>(track->facts().duration, 10);
    for (qint64 n = 0; n < duration; ++n) {
        if (track->facts().kind == TrackKind::Picture) {
            const auto frame = track->readFrame(n);
            if (!frame)
                return frame.error().sentence();
        }
    }
    if (track->facts().kind == TrackKind::Sound) {
        const auto samples = track->readSamples(track->facts().duration - duration, duration);
        if (!samples)
            return samples.error().sentence();
    }
    return {};
}

using Damage = std::function<void(QByteArray&)>;

using Rows = support::Rows<bool, Damage, QString>;

/// Bytes in place of others, `offset` after the start of the `n`th item with this key.
Damage patched(const Ul& key, int n, int offset, const QByteArray& patch)
{
    return [=](QByteArray& f) { put(f, keyAt(f, key, n) + offset, patch); };
}

/// Bytes in place of others in the value of a set's local item.
Damage patchedItem(const Ul& set, const char* tag, int offset, const QByteArray& patch, int n = 0)
{
    return [=](QByteArray& f) { put(f, itemAt(f, keyAt(f, set, n), tag) + offset, patch); };
}

Damage cut(const Ul& key, int n, int offset)
{
    return [=](QByteArray& f) { f.truncate(keyAt(f, key, n) + offset); };
}

void damagePartitions(const Rows& row)
{
    row(
        "empty", false, [](QByteArray& f) { f.clear(); }, "(offset 0): it is no MXF file; choose an MXF track file.");
    row("cut before the footer", false, cut(keys::footerPartition, 0, 0),
        "the file is cut: its footer is missing; copy the file again.");
    row("partition pack moved", false, patched(keys::bodyPartition, 0, 20 + 15, "\x01"),
        "the partition pack is damaged; copy the file again.");
    row("random index points elsewhere", false, patched(keys::randomIndex, 0, 20 + 12 + 11, QByteArray(1, '\x7')),
        "there is no partition where one should be; copy the file again.");
    row(
        "header too long", false, [](QByteArray& f) { put(f, 20 + 32, QByteArray::fromHex("00000000ffffffff")); },
        "(offset 0): the partition's byte counts reach beyond its end; copy the file again.");
    row(
        "header negative", false, [](QByteArray& f) { put(f, 20 + 32, QByteArray::fromHex("ff00000000000000")); },
        "(offset 0): the partition pack is damaged; copy the file again.");
    row(
        "no header metadata", false, [](QByteArray& f) { put(f, 20 + 32, QByteArray(8, '\0')); },
        "(offset 0): the file has no header metadata; copy the file again.");
    row("primer counts too much", false, patched(keys::primer, 0, 20, QByteArray(4, '\x7f')),
        "the primer pack is damaged; copy the file again.");
    row("item reaches past its set", false, patched(setKey(0x2f), 0, 20 + 2, "\xff\xff"),
        "a metadata set is damaged; copy the file again.");
}

void damageMetadata(const Rows& row)
{
    row("no file package", false, patched(setKey(0x37), 0, 13, QByteArray(1, '\x7e')),
        "the file has no file package; have the file made again.");
    row("no descriptor", false, patched(setKey(0x28), 0, 4, QByteArray(1, '\x7e')),
        "the file package has no descriptor or no identifier; have the file made again.");
    row("no edit rate", false, patchedItem(setKey(0x3b), "4b010008", 0, QByteArray(8, '\0'), 1),
        "the track has no usable edit rate; have the file made again.");
    row("no width", false, patchedItem(setKey(0x28), "32030004", 0, QByteArray(4, '\0')),
        "a picture of 0x180 is not possible; have the file made again.");
    row("4:2:0", false, patchedItem(setKey(0x28), "33080004", 3, "\x02"),
        "the picture is neither 4:2:2 nor 4:4:4; have the file made again.");
}

void damageEssence(const Rows& row)
{
    row("longer than its index", false,
        patchedItem(setKey(0x28), "30020008", 0, QByteArray::fromHex("7fffffffffffffff")),
        "the index table holds 3 of 9223372036854775807 frames; copy the file again.");
    row("index entries cut", false, patchedItem(keys::indexSegment, "3f0a0029", 0, QByteArray(4, '\x7f')),
        "an index table segment is damaged; copy the file again.");
    row("index entry points nowhere", false,
        patchedItem(keys::indexSegment, "3f0a0029", 8 + 11 + 3, QByteArray(8, '\x7f')),
        "there is no essence at stream offset 9187201950435737471; copy the file again.");
    row("index entry points into a frame", false,
        patchedItem(keys::indexSegment, "3f0a0029", 8 + 11 + 10, QByteArray(1, '\x1')), "; copy the file again.");
    row("frame with another key", false, patched(keys::j2kFrame, 1, 12, "\x17"),
        "frame 1 is no picture essence; copy the file again.");
    row("frame of endless length", false, patched(keys::j2kFrame, 0, 16, "\x80"),
        "an item has no usable length; copy the file again.");
    row("frame longer than its partition", false, patched(keys::j2kFrame, 0, 16, "\x83\xff\xff\xff"),
        "an item of 16777215 bytes reaches beyond its place; copy the file again.");
    row("essence in no stream", false, patched(keys::bodyPartition, 0, 20 + 60, QByteArray(4, '\0')),
        "(offset 0): the file holds no essence; copy the file again.");
    row("no channels", true, patchedItem(setKey(0x48), "3d070004", 0, QByteArray(4, '\0')),
        "0 channels of 24 bits in blocks of 6 bytes are not possible; have the file made again.");
    row("no sample rate", true, patchedItem(setKey(0x48), "3d030008", 4, QByteArray(4, '\0')),
        "a sample rate of 1/0 is not possible; have the file made again.");
    row("frame-wrapped", true, patched(keys::pcmClip, 0, 14, "\x01"),
        "the sound is not clip-wrapped; copy the file again.");
    row("clip shorter than the track", true, patched(keys::pcmClip, 0, 22, "\x1e"),
        "the clip holds 1317 of 2000 samples; copy the file again.");
}

} // namespace

class TestMxfDamage : public QObject
{
    Q_OBJECT

private slots:

    void initTestCase()
    {
        const QString picture = m_folder.filePath(QStringLiteral("p.mxf"));
        const QString sound = m_folder.filePath(QStringLiteral("s.mxf"));
        QVERIFY(tinytracks::writePicture(picture, 3));
        QVERIFY(tinytracks::writeSound(sound, 2000));
        m_picture = support::fileBytes(picture);
        m_sound = support::fileBytes(sound);
        QCOMPARE(complaint(picture), QString());
        QCOMPARE(complaint(sound), QString());
    }

    void oneDamageGivesOneError_data()
    {
        const Rows row;
        damagePartitions(row);
        damageMetadata(row);
        damageEssence(row);
    }

    void oneDamageGivesOneError()
    {
        const auto [sound, damage, expected] = support::fetched<bool, Damage, QString>();
        const QByteArray& good = sound ? m_sound : m_picture;
        QByteArray bytes = good;
        damage(bytes);
        QVERIFY(bytes != good);
        const QString path = write(bytes);
        const QString said = complaint(path);
        QVERIFY2(said.startsWith(path) && said.endsWith(expected) && said.contains(QStringLiteral("(offset ")),
                 qPrintable(said));
    }

    void aFileWithoutRandomIndexIsWalked()
    {
        QByteArray bytes = m_picture;
        bytes.truncate(keyAt(bytes, keys::randomIndex));
        const QString path = write(bytes);
        QCOMPARE(complaint(path), QString());
        QCOMPARE(readTrackFile(path)->facts().partitions.size(), 4);
    }

    void aFileWithoutIndexTableIsWalked()
    {
        QByteArray bytes = m_picture;
        put(bytes, keyAt(bytes, keys::indexSegment), keys::fill.toBytes());
        QCOMPARE(complaint(write(bytes)), QString());
        put(bytes, keyAt(bytes, keys::j2kFrame, 1), keys::fill.toBytes());
        QVERIFY(
            complaint(write(bytes)).endsWith(QStringLiteral("the essence holds 2 of 3 frames; copy the file again.")));
    }

    void noCutGoesUnnoticed()
    {
        std::mt19937 random(11);
        const int footer = keyAt(m_picture, keys::footerPartition);
        for (int i = 0; i < 200; ++i) {
            const int size = int(random() % unsigned(footer + 100));
            const QString said = complaint(write(m_picture.left(size)));
            QVERIFY2(said.contains(QStringLiteral("offset ")), qPrintable(QString::number(size)));
        }
    }

    void randomDamageNeverCrashes()
    {
        std::mt19937 random(support::seed());
        for (int i = 0; i < 1500; ++i) {
            QByteArray bytes = random() % 2 == 0 ? m_picture : m_sound;
            const int count = 1 + int(random() % 4);
            for (int j = 0; j < count; ++j) {
                // Most damage goes where the structure is: the first pages and the last ones.
                const unsigned range = random() % 4 == 0 ? unsigned(bytes.size()) : 4000;
                const int at = int(random() % range);
                bytes[random() % 3 == 0 ? bytes.size() - 1 - at : at] = char(random() % 2 == 0 ? 0xff : random());
            }
            complaint(write(bytes));
        }
    }

private:
    QString write(const QByteArray& bytes)
    {
        const QString path = m_folder.filePath(QStringLiteral("damaged.mxf"));
        support::writeFile(path, bytes);
        return path;
    }

    QTemporaryDir m_folder;
    QByteArray m_picture;
    QByteArray m_sound;
};

QTEST_GUILESS_MAIN(TestMxfDamage)
#include "tst_mxf_damage.moc"
