#include "desk/services/SettingsStorage.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using desk::services::SettingsStorage;

class TestSettingsStorage : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString file() const { return m_folder.filePath(QStringLiteral("packages.json")); }

    QStringList files() const { return QDir(m_folder.path()).entryList(QDir::Files); }

private slots:

    void init()
    {
        const QStringList names = files();
        for (const QString& name : names)
            QVERIFY(QFile::remove(m_folder.filePath(name)));
    }

    void whatWasStoredIsThereInTheNextRun()
    {
        const QJsonArray folders{"/a", "/b"};
        SettingsStorage storage(file());
        storage.set("FOLDERS", folders);
        SettingsStorage next(file());
        QVERIFY(next.get("FOLDERS").has_value());
        QCOMPARE(*next.get("FOLDERS"), folders);
        QVERIFY(!next.get("OTHER").has_value());
        QVERIFY(next.takeNotices().isEmpty());
    }

    void aDamagedFileIsSetAsideAndNeverOverwritten_data()
    {
        const support::Rows<QByteArray> row;
        row("no JSON", QByteArray("{\"A\": [1,"));
        row("half a document", QByteArray("{\"UNBURNED_ITEMS_KEY\":[{\"Name\":\"x\""));
        row("an array", QByteArray("[1, 2]"));
        row("wrong type below a key", QByteArray("{\"KEY\": [1], \"UNBURNED_ITEMS_KEY\": \"x\"}"));
        row("empty", QByteArray());
        row("bytes", QByteArray("\0\xff\xfe\x01", 4));
    }

    void aDamagedFileIsSetAsideAndNeverOverwritten()
    {
        const auto [text] = support::fetched<QByteArray>();
        support::writeFile(file(), text);
        SettingsStorage storage(file());
        const QStringList notices = storage.takeNotices();
        QCOMPARE(notices.size(), 1);
        QVERIFY(notices.first().contains(file()));
        QVERIFY(!storage.get("KEY").has_value());
        storage.set("KEY", {1});
        QStringList aside = files();
        QVERIFY(aside.removeOne(QStringLiteral("packages.json")));
        QCOMPARE(aside.size(), 1);
        QVERIFY(notices.first().contains(aside.first()));
        QCOMPARE(support::fileBytes(m_folder.filePath(aside.first())), text);
        QCOMPARE(*SettingsStorage(file()).get("KEY"), QJsonArray{1});
    }

    void theStateOfTheLastRunOutlivesTheChangesOfThisOne()
    {
        SettingsStorage earlier(file());
        earlier.set("WORK", {"the user's work"});
        const QByteArray before = support::fileBytes(file());
        SettingsStorage storage(file());
        storage.set("WORK", {});
        storage.set("WORK", {"something else"});
        QCOMPARE(support::fileBytes(file() + QStringLiteral(".previous")), before);
    }

    void whatCouldNotBeWrittenIsToldAndWrittenLater()
    {
        support::writeFile(m_folder.filePath(QStringLiteral("profile")), "in the way");
        const QString wanted = m_folder.filePath(QStringLiteral("profile/packages.json"));
        SettingsStorage storage(wanted);
        storage.set("KEY", {1});
        QCOMPARE(*storage.get("KEY"), QJsonArray{1});
        QVERIFY(storage.takeNotices().join(QString()).contains(wanted));
        QVERIFY(QFile::remove(m_folder.filePath(QStringLiteral("profile"))));
        storage.set("KEY", {1});
        QCOMPARE(*SettingsStorage(wanted).get("KEY"), QJsonArray{1});
    }
};

STRATACUT_TEST_MAIN(TestSettingsStorage)
#include "tst_settings_storage.moc"
