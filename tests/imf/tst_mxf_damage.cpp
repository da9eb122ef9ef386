#include "desk/imf/j2k/J2kEncoder.h"
#include "desk/imf/mxf/Klv.h"
#include "desk/imf/mxf/TrackFileReader.h"
#include "imf/support/Programs.h"
#include "imf/support/TinyTracks.h"

#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <functional>
#include <random>

Q_DECLARE_METATYPE(std::function<void(QByteArray&)>)

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

void damage(const char* name, const Damage& change, const char* expected)
{
    QTest::newRow(name) << false << change << QString::fromLatin1(expected);
}

void soundDamage(const char* name, const Damage& change, const char* expected)
{
    QTest::newRow(name) << true << change << QString::fromLatin1(expected);
}

void damagePartitions()
{
    damage(
        "empty", [](QByteArray& f) { f.clear(); }, "(offset 0): it is no MXF file; choose an MXF track file.");
    damage(
        "other kind of file", [](QByteArray& f) { f = QByteArray(5000, 'x'); },
        "(offset 0): it is no MXF file; choose an MXF track file.");
    damage(
        "cut in a frame", [](QByteArray& f) { f.truncate(keyAt(f, keys::j2kFrame, 1) + 500); },
        "bytes reaches beyond its place; copy the file again.");
    damage(
        "cut before the footer", [](QByteArray& f) { f.truncate(keyAt(f, keys::footerPartition)); },
        "the file is cut: its footer is missing; copy the file again.");
    damage(
        "cut in a key", [](QByteArray& f) { f.truncate(keyAt(f, keys::j2kFrame, 2) + 9); },
        "the file is cut inside an item's key and length; copy the file again.");
    damage(
        "partition pack moved", [](QByteArray& f) { put(f, keyAt(f, keys::bodyPartition) + 20 + 15, "\x01"); },
        "the partition pack is damaged; copy the file again.");
    damage(
        "random index points elsewhere",
        [](QByteArray& f) { put(f, keyAt(f, keys::randomIndex) + 20 + 12 + 11, QByteArray(1, '\x7')); },
        "there is no partition where one should be; copy the file again.");
    damage(
        "header too long", [](QByteArray& f) { put(f, 20 + 32, QByteArray::fromHex("00000000ffffffff")); },
        "(offset 0): the partition's byte counts reach beyond its end; copy the file again.");
    damage(
        "header negative", [](QByteArray& f) { put(f, 20 + 32, QByteArray::fromHex("ff00000000000000")); },
        "(offset 0): the partition pack is damaged; copy the file again.");
    damage(
        "no header metadata", [](QByteArray& f) { put(f, 20 + 32, QByteArray(8, '\0')); },
        "(offset 0): the file has no header metadata; copy the file again.");
    damage(
        "primer counts too much", [](QByteArray& f) { put(f, keyAt(f, keys::primer) + 20, QByteArray(4, '\x7f')); },
        "the primer pack is damaged; copy the file again.");
    damage(
        "item reaches past its set", [](QByteArray& f) { put(f, keyAt(f, setKey(0x2f)) + 20 + 2, "\xff\xff"); },
        "a metadata set is damaged; copy the file again.");
}

void damageMetadata()
{
    damage(
        "no file package", [](QByteArray& f) { put(f, keyAt(f, setKey(0x37)) + 13, QByteArray(1, '\x7e')); },
        "the file has no file package; have the file made again.");
    damage(
        "no descriptor", [](QByteArray& f) { put(f, keyAt(f, setKey(0x28)) + 4, QByteArray(1, '\x7e')); },
        "the file package has no descriptor or no identifier; have the file made again.");
    damage(
        "no edit rate",
        [](QByteArray& f) { put(f, itemAt(f, keyAt(f, setKey(0x3b), 1), "4b010008"), QByteArray(8, '\0')); },
        "the track has no usable edit rate; have the file made again.");
    damage(
        "no width", [](QByteArray& f) { put(f, itemAt(f, keyAt(f, setKey(0x28)), "32030004"), QByteArray(4, '\0')); },
        "a picture of 0x180 is not possible; have the file made again.");
    damage(
        "4:2:0", [](QByteArray& f) { put(f, itemAt(f, keyAt(f, setKey(0x28)), "33080004") + 3, "\x02"); },
        "the picture is neither 4:2:2 nor 4:4:4; have the file made again.");
}

void damageEssence()
{
    damage(
        "longer than its index",
        [](QByteArray& f) {
            put(f, itemAt(f, keyAt(f, setKey(0x28)), "30020008"), QByteArray::fromHex("7fffffffffffffff"));
        },
        "the index table holds 3 of 9223372036854775807 frames; copy the file again.");
    damage(
        "index entries cut",
        [](QByteArray& f) { put(f, itemAt(f, keyAt(f, keys::indexSegment), "3f0a0029"), QByteArray(4, '\x7f')); },
        "an index table segment is damaged; copy the file again.");
    damage(
        "index entry points nowhere",
        [](QByteArray& f) {
            put(f, itemAt(f, keyAt(f, keys::indexSegment), "3f0a0029") + 8 + 11 + 3, QByteArray(8, '\x7f'));
        },
        "there is no essence at stream offset 9187201950435737471; copy the file again.");
    damage(
        "index entry points into a frame",
        [](QByteArray& f) {
            put(f, itemAt(f, keyAt(f, keys::indexSegment), "3f0a0029") + 8 + 11 + 10, QByteArray(1, '\x1'));
        },
        "; copy the file again.");
    damage(
        "frame with another key", [](QByteArray& f) { put(f, keyAt(f, keys::j2kFrame, 1) + 12, "\x17"); },
        "frame 1 is no picture essence; copy the file again.");
    damage(
        "frame of endless length", [](QByteArray& f) { put(f, keyAt(f, keys::j2kFrame) + 16, "\x80"); },
        "an item has no usable length; copy the file again.");
    damage(
        "frame longer than its partition",
        [](QByteArray& f) { put(f, keyAt(f, keys::j2kFrame) + 16, "\x83\xff\xff\xff"); },
        "an item of 16777215 bytes reaches beyond its place; copy the file again.");
    damage(
        "essence in no stream",
        [](QByteArray& f) { put(f, keyAt(f, keys::bodyPartition) + 20 + 60, QByteArray(4, '\0')); },
        "(offset 0): the file holds no essence; copy the file again.");
    soundDamage(
        "no channels",
        [](QByteArray& f) { put(f, itemAt(f, keyAt(f, setKey(0x48)), "3d070004"), QByteArray(4, '\0')); },
        "0 channels of 24 bits in blocks of 6 bytes are not possible; have the file made again.");
    soundDamage(
        "no sample rate",
        [](QByteArray& f) { put(f, itemAt(f, keyAt(f, setKey(0x48)), "3d030008") + 4, QByteArray(4, '\0')); },
        "a sample rate of 1/0 is not possible; have the file made again.");
    soundDamage(
        "frame-wrapped", [](QByteArray& f) { put(f, keyAt(f, keys::pcmClip) + 14, "\x01"); },
        "the sound is not clip-wrapped; copy the file again.");
    soundDamage(
        "clip shorter than the track", [](QByteArray& f) { put(f, keyAt(f, keys::pcmClip) + 22, "\x1e"); },
        "the clip holds 1317 of 2000 samples; copy the file again.");
}

} // namespace

class TestMxfDamage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void oneDamageGivesOneError_data();
    void oneDamageGivesOneError();
    void aFileWithoutRandomIndexIsWalked();
    void aFileWithoutIndexTableIsWalked();
    void noCutGoesUnnoticed();
    void randomDamageNeverCrashes();

private:
    QString write(const QByteArray& bytes)
    {
        const QString path = m_folder.filePath(QStringLiteral("damaged.mxf"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    QTemporaryDir m_folder;
    QByteArray m_picture;
    QByteArray m_sound;
};

void TestMxfDamage::initTestCase()
{
    const QString picture = m_folder.filePath(QStringLiteral("p.mxf"));
    const QString sound = m_folder.filePath(QStringLiteral("s.mxf"));
    QVERIFY(tinytracks::writePicture(picture, 3));
    QVERIFY(tinytracks::writeSound(sound, 2000));
    m_picture = programs::fileBytes(picture);
    m_sound = programs::fileBytes(sound);
    QCOMPARE(complaint(picture), QString());
    QCOMPARE(complaint(sound), QString());
}

void TestMxfDamage::oneDamageGivesOneError_data()
{
    QTest::addColumn<bool>("sound");
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QString>("expected");
    damagePartitions();
    damageMetadata();
    damageEssence();
}

void TestMxfDamage::oneDamageGivesOneError()
{
    QFETCH(bool, sound);
    QFETCH(Damage, damage);
    QFETCH(QString, expected);
    const QByteArray& good = sound ? m_sound : m_picture;
    QByteArray bytes = good;
    damage(bytes);
    QVERIFY(bytes != good);
    const QString path = write(bytes);
    const QString said = complaint(path);
    QVERIFY2(said.startsWith(path) && said.endsWith(expected) && said.contains(QStringLiteral("(offset ")),
             qPrintable(said));
}

void TestMxfDamage::aFileWithoutRandomIndexIsWalked()
{
    QByteArray bytes = m_picture;
    bytes.truncate(keyAt(bytes, keys::randomIndex));
    const QString path = write(bytes);
    QCOMPARE(complaint(path), QString());
    QCOMPARE(readTrackFile(path)->facts().partitions.size(), 4);
}

void TestMxfDamage::aFileWithoutIndexTableIsWalked()
{
    QByteArray bytes = m_picture;
    put(bytes, keyAt(bytes, keys::indexSegment), keys::fill.toBytes());
    QCOMPARE(complaint(write(bytes)), QString());
    put(bytes, keyAt(bytes, keys::j2kFrame, 1), keys::fill.toBytes());
    QVERIFY(complaint(write(bytes)).endsWith(QStringLiteral("the essence holds 2 of 3 frames; copy the file again.")));
}

void TestMxfDamage::noCutGoesUnnoticed()
{
    std::mt19937 random(11);
    const int footer = keyAt(m_picture, keys::footerPartition);
    for (int i = 0; i < 200; ++i) {
        const int size = int(random() % unsigned(footer + 100));
        const QString said = complaint(write(m_picture.left(size)));
        QVERIFY2(said.contains(QStringLiteral("offset ")), qPrintable(QString::number(size)));
    }
}

void TestMxfDamage::randomDamageNeverCrashes()
{
    const unsigned seed = std::random_device{}();
    qInfo("seed %u", seed);
    std::mt19937 random(seed);
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

QTEST_GUILESS_MAIN(TestMxfDamage)
#include "tst_mxf_damage.moc"
