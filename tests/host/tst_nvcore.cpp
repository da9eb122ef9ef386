#include "NvCore/Assert.h"
#include "NvCore/NvText.h"
#include "NvCore/RangeArray.h"
#include "NvCore/Toggles.h"
#include "support/Assertions.h"
#include "support/Programs.h"
#include "support/TestMain.h"

#include <QTranslator>

#include <limits>

namespace
{
constexpr const char* multiMix = "/Stratacut/IMFMultipleAudioMix";
constexpr const char* multiMixVariable = "TGL_Stratacut_IMFMultipleAudioMix";

class UpperCaseTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return qstrcmp(context, NvTextTranslation::Context) == 0 ? QString::fromUtf8(text).toUpper() : QString();
    }
};

// What a map of ranges must answer, position by position.
class ReferenceMap
{
public:
    static constexpr int Size = 48;

    ReferenceMap() { std::fill(std::begin(m_values), std::end(m_values), RangeArray::Unset); }

    void set(int first, int end, int value)
    {
        for (int at = first; at < end; ++at)
            m_values[at] = value;
    }

    int at(qint64 position) const { return position < 0 || position >= Size ? RangeArray::Unset : m_values[position]; }

    int runs() const
    {
        int count = 0;
        for (int at = 0; at < Size; ++at)
            count += m_values[at] != RangeArray::Unset && m_values[at] != this->at(at - 1);
        return count;
    }

private:
    int m_values[Size];
};

void compare(const RangeArray& map, const ReferenceMap& reference)
{
    QCOMPARE(map.count(), reference.runs());
    QCOMPARE(map.isEmpty(), reference.runs() == 0);
    for (qint64 at = -2; at < ReferenceMap::Size + 2; ++at) {
        QCOMPARE(map.GetRange(at), reference.at(at));
        const RangeArray::Range range = map.rangeAt(at);
        QVERIFY(range.first <= at && at < range.end);
        QCOMPARE(range.value, reference.at(at));
        if (range.first >= 0)
            QVERIFY(reference.at(range.first - 1) != range.value);
        if (range.end <= ReferenceMap::Size)
            QVERIFY(reference.at(range.end) != range.value);
    }
}
} // namespace

class tst_nvcore : public QObject
{
    Q_OBJECT

private slots:

    void init()
    {
        qunsetenv(multiMixVariable);
        TGL_ResetToggle(multiMix);
        TGL_SetToggleFile(m_folder.filePath("toggles"));
        QFile::remove(TGL_ToggleFile());
    }

    void rangesAgreeWithAPlainTableUnderRandomChanges()
    {
        QRandomGenerator random(support::seed());
        for (int round = 0; round < 40; ++round) {
            const std::unique_ptr<RangeArray> map = RangeArray::New();
            ReferenceMap reference;
            for (int step = 0; step < 60; ++step) {
                const int first = random.bounded(ReferenceMap::Size);
                const int end = first + random.bounded(ReferenceMap::Size - first + 1);
                const int value = random.bounded(-1, 3);
                map->SetRange(first, end, value);
                reference.set(first, end, value);
                compare(*map, reference);
                if (QTest::currentTestFailed())
                    return;
            }
        }
    }

    void rangesReachTheEndsOfTheNumbersAndNeverRunBackwards()
    {
        using Limits = std::numeric_limits<qint64>;
        RangeArray map;
        map.SetRange(Limits::min(), Limits::max(), 7);
        map.SetRange(0, 10, RangeArray::Unset);
        map.SetRange(8, 2, 2);
        QCOMPARE(map.GetRange(Limits::min()), 7);
        QCOMPARE(map.GetRange(Limits::max() - 1), 7);
        QCOMPARE(map.GetRange(5), RangeArray::Unset);
        QCOMPARE(map.count(), 2);
    }

    void theFirstPlaceThatKnowsAToggleDecides()
    {
        QVERIFY(!TGL_GetToggle(multiMix));
        TGL_SetDefault(multiMix, true);
        QVERIFY(TGL_GetToggle(multiMix));
        support::writeFile(TGL_ToggleFile(), "/Stratacut/IMFMultipleAudioMix = no");
        QVERIFY(!TGL_GetToggle(multiMix));
        TGL_SetDefault(multiMix, false);
        support::writeFile(TGL_ToggleFile(),
                           "# comment\n/Stratacut/IMFMultipleAudioMix = off\n#/Stratacut/IMFMultipleAudioMix = off\n"
                           "/Stratacut/IMFMultipleAudioMix=on\n/Stratacut/IMFMultipleAudioMixer = off\n");
        QVERIFY(TGL_GetToggle(multiMix));
        QVERIFY(!TGL_GetToggle("/Stratacut/IMFMCAMetadata"));
        qputenv(multiMixVariable, "off");
        QVERIFY(!TGL_GetToggle(multiMix));
        TGL_SetToggle(multiMix, true);
        QVERIFY(TGL_GetToggle(multiMix));
        TGL_ResetToggle(multiMix);
        QVERIFY(!TGL_GetToggle(multiMix));
    }

    void aToggleWordIsReadInEveryForm()
    {
        const QByteArrayList words{"on", "ON", "True", "yes", " 1 ", "off", "False", "NO", "0"};
        for (int i = 0; i < words.size(); ++i) {
            const bool on = i < 5;
            support::writeFile(TGL_ToggleFile(), QByteArray(multiMix) + " = " + (on ? "off" : "on"));
            qputenv(multiMixVariable, words[i]);
            QVERIFY2(TGL_GetToggle(multiMix) == on, words[i]);
        }
    }

    void anUnreadableToggleWordCountsAsAbsentAndIsReportedOnce()
    {
        support::writeFile(TGL_ToggleFile(), "/Stratacut/IMFMultipleAudioMix = on\n");
        qputenv(multiMixVariable, "perhaps");
        support::expectMessage(QtWarningMsg, "Toggle /Stratacut/IMFMultipleAudioMix: \"perhaps\" in "
                                             "TGL_Stratacut_IMFMultipleAudioMix is not a value; write on or off");
        QVERIFY(TGL_GetToggle(multiMix));
        QVERIFY(TGL_GetToggle(multiMix));
    }

    void aFailedCheckReportsItsExpressionAndItsFile()
    {
        support::Assertions assertions;
        const int* mime = nullptr;
        NV_ASSERT(mime != nullptr);
        NV_ASSERT(mime == nullptr);
        NV_ASSERT(std::is_same<int, long>::value);
        nvAssertFailed("x", "C:\\source\\IMF_CPL.test.cpp");
        // Its expression is evaluated once, and it works as a statement.
        int evaluations = 0;
        if (evaluations == 0)
            NV_ASSERT(++evaluations == 2);
        else
            QFAIL("the check swallowed the branch");
        QCOMPARE(evaluations, 1);
        QCOMPARE(assertions.take(),
                 QStringList({"tst_nvcore: mime != nullptr", "tst_nvcore: std::is_same<int, long>::value", "IMF_CPL: x",
                              "tst_nvcore: ++evaluations == 2"}));
    }

    void theDefaultHandlerEndsADebugBuildOnly()
    {
        const support::Ran probe = support::ran(QStringLiteral(ASSERT_PROBE), {});
#if defined(STRATACUT_DEBUG)
        QCOMPARE(probe.exitCode, -1);
        QVERIFY2(probe.errors.contains("Assertion failed in assert_probe: 1 + 1 == 3"), probe.errors.constData());
        QCOMPARE(probe.output, QByteArray());
#else
        QCOMPARE(probe.exitCode, 0);
        QCOMPARE(probe.errors + probe.output, QByteArray("went on\n"));
#endif
    }

    void aTextFollowsTheLanguage()
    {
        const NvText text = stx_func("Select Delivery Folder");
        QCOMPARE(QString(text), QStringLiteral("Select Delivery Folder"));
        UpperCaseTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QCOMPARE(text.toQString(), QStringLiteral("SELECT DELIVERY FOLDER"));
        QCOMPARE(text.key(), QByteArray("Select Delivery Folder"));
        QCOMPARE(NvText().toQString(), QString());
        QCoreApplication::removeTranslator(&translator);
    }

    void anInstalledLookupComesBeforeTheTranslators()
    {
        NvTextTranslation::install(
            [](const QByteArray& key) { return key == "Cancel" ? QStringLiteral("Annuler") : QString(); });
        const QString known = stx_func("Cancel");
        const QString unknown = stx_func("Original");
        NvTextTranslation::install({});
        QCOMPARE(known, QStringLiteral("Annuler"));
        QCOMPARE(unknown, QStringLiteral("Original"));
        QCOMPARE(stx_func("Cancel").toQString(), QStringLiteral("Cancel"));
    }

private:
    QTemporaryDir m_folder;
};

STRATACUT_TEST_MAIN(tst_nvcore)
#include "tst_nvcore.moc"
