#include "ModelFixture.h"

#include "StratacutUI/IMF_DataModelSerializer.h"
#include "support/ModalAnswer.h"
#include "support/Shape.h"
#include "support/TestMain.h"

using Model = IMF_PackageMgrQtModel;
using support::ModalAnswer;

namespace
{
QJsonArray groups()
{
    return {QJsonObject{{"Name", "G"}, {"Include Master Fader", true}, {"Tracks", QJsonArray{"A1"}}}};
}

QJsonArray saved(ModelFixture& f)
{
    return IMF_DataModelSerializer(f.model.get(), &f.bridge).saveUnCommitedState();
}

void restore(ModelFixture& f, const QJsonArray& state)
{
    IMF_DataModelSerializer(f.model.get(), &f.bridge).loadUnCommitedState(state);
}

/// A deliverable with two IMPs, the first with two CPLs.
void buildFilm(ModelFixture& f)
{
    Model& model = *f.model;
    const QModelIndex delivery = f.newDelivery("Film", IMF_PackageMgr::Supplemental);
    const QModelIndex imp = f.newImp(delivery);
    f.newImp(delivery);
    const QModelIndex cpl = f.newCpl(imp, "m1");
    f.newCpl(imp, "m2");
    model.setData(cpl, groups(), Model::TrackGroupsRole);
    model.setData(imp, "Feature");
}
} // namespace

/// Saving and restoring uncommitted items.
class TestSavedState : public QObject
{
    Q_OBJECT

private slots:

    void theHostLearnsOfWhatIsRestored()
    {
        ModelFixture f;
        buildFilm(f);
        f.controller().onSaveSettings();
        f.bridge.takeCalls();
        f.restart();
        const QModelIndex cpl = f.model->index(0, 0, f.model->index(0, 0, f.model->index(0, 0)));
        QCOMPARE(cpl.data(Model::TrackGroupsRole).toJsonArray(), groups());
        QVERIFY(cpl.data(Model::AudioGroupingRole).value<QAbstractItemModel*>());
        QCOMPARE(f.bridge.takeCalls(),
                 QStringList({"createDelivery(Film, /out, supplemental)", "createIMP(Film#2/Feature)",
                              "createCPL(Film#2/Feature/Sequence m1, token:m1)",
                              "createCPL(Film#2/Feature/Sequence m2, token:m2)", "createIMP(Film#2/Untitled IMP.1)"}));
        QCOMPARE(saved(f), f.settings->value("UNBURNED_ITEMS_KEY"));
    }

    void newImpsOutliveAFolderThatIsAway()
    {
        ModelFixture f;
        f.newImp(f.load("/d", "d", documents::delivery("D", "/d")));
        f.controller().onSaveSettings();
        const QPair<QByteArray, QJsonObject> folder = f.bridge.deliveries.take("/d");
        {
            ModalAnswer answer(QMessageBox::Ok);
            f.restart();
            QCOMPARE(answer.text, QString("No deliverable in /d."));
        }
        QCOMPARE(outline(*f.model), QString("D(Untitled IMP)"));
        f.controller().onSaveSettings();
        f.bridge.deliveries["/d"] = folder;
        f.restart();
        QCOMPARE(outline(*f.model), QString("D(Untitled IMP)"));
        QCOMPARE(f.bridge.calls.filter("createDelivery").size(), 1);
    }

    void aCommittedImpOfANewDeliverableIsFoundAgain()
    {
        ModelFixture f;
        f.load("/out", "o", documents::delivery("Around", "/out"));
        const QModelIndex delivery = f.newDelivery("Film");
        const QModelIndex imp = f.newImp(delivery);
        f.newImp(delivery);
        f.putOnDisk("/out/Film", "Film#1", documents::delivery("Film", "/out/Film", {documents::imp("Untitled IMP")}));
        f.controller().onCommitComplete(imp, {});
        f.controller().onSaveSettings();
        f.restart();
        QCOMPARE(outline(*f.model), QString("Around,Film(Untitled IMP,Untitled IMP.1)"));
        const QModelIndex second = f.model->index(1, 0, f.model->index(1, 0));
        QCOMPARE(int(Model::StatusFromIndex(second)), int(IMF_PackageMgr::Uncommitted));
    }

    void impsReturnToTheUncommittedDeliverableThatTheyName()
    {
        ModelFixture f;
        f.newImp(f.newDelivery("Film"));
        const QJsonValue film = damagedAt(saved(f).first(), {"NewDelivery"}, false);
        restore(f, {film, damagedAt(film, {"Name"}, "Away")});
        QCOMPARE(outline(*f.model), QString("Film(Untitled IMP,Untitled IMP)"));
    }

    void namesakesComeBackApart()
    {
        ModelFixture f;
        const QModelIndex delivery = f.newDelivery("Film");
        const QModelIndex first = f.newImp(delivery);
        const QModelIndex second = f.newImp(delivery);
        f.model->setData(second, first.data().toString());
        f.newCpl(first, "m1");
        f.newCpl(second, "m2");
        f.newCpl(second, "m2");
        const QJsonArray state = saved(f);
        f.controller().onSaveSettings();
        f.restart();
        QCOMPARE(saved(f), state);
    }

    void aRefusedDeliverableEndsTheRestore()
    {
        ModelFixture f;
        for (const char* name : {"One", "Two", "Three"})
            f.newImp(f.newDelivery(name));
        f.controller().onSaveSettings();
        f.bridge.failCall("createDelivery(Two, /out, original)", 1, "No room.");
        const ModalAnswer answer(QMessageBox::Ok);
        f.restart();
        QCOMPARE(answer.title, QString("Failed to restore state"));
        QCOMPARE(answer.text, QString("No room."));
        QCOMPARE(answer.icon, QMessageBox::Warning);
        QCOMPARE(outline(*f.model), QString("One(Untitled IMP)"));
    }

    void refusedImpsAndCplsAreLeftOutSilently()
    {
        ModelFixture f;
        buildFilm(f);
        f.controller().onSaveSettings();
        f.bridge.failCall("createIMP(Film#2/Untitled IMP.1)", 1, "No.");
        f.bridge.failCall("createCPL(Film#2/Feature/Sequence m1, token:m1)", 1, "No.");
        f.restart();
        QCOMPARE(outline(*f.model), QString("Film(Feature(Sequence m2))"));
    }

    void rowsMayGoWhileTheHostRegistersThem_data()
    {
        const support::Rows<QString, int, QString> row;
        row("the delivery, at an IMP", "createIMP", 0, "");
        row("the delivery, at a CPL", "createCPL", 0, "");
        row("the IMP itself", "createIMP", 1, "Film(Untitled IMP.1)");
        row("the IMP of the CPL", "createCPL", 1, "Film(Untitled IMP.1)");
    }

    void rowsMayGoWhileTheHostRegistersThem()
    {
        const auto [operation, depth, left] = support::fetched<QString, int, QString>();
        ModelFixture f;
        buildFilm(f);
        f.controller().onSaveSettings();
        bool removed = false;
        f.bridge.onCall = [&, operation = operation, depth = depth](const QString& call) {
            if (std::exchange(removed, removed || call.startsWith(operation)) || !removed)
                return;
            const QModelIndex delivery = f.model->index(0, 0);
            f.model->removeIndex(depth == 0 ? delivery : f.model->index(0, 0, delivery));
        };
        f.restart();
        QVERIFY(removed);
        QCOMPARE(outline(*f.model), left);
    }

    void damageCostsNoMoreThanTheDamagedItem_data()
    {
        const support::Rows<QString, QJsonValue, QString> row;
        const QJsonValue absent(QJsonValue::Undefined);
        const QString whole = "Film(Feature(Sequence m1,Sequence m2),Untitled IMP.1),";
        const QString other = "Other(Untitled IMP)";
        row("element a number", "0", QJsonValue(7), other);
        row("element null", "0", QJsonValue(), other);
        row("element an array", "0", QJsonValue(QJsonArray{1, QJsonObject()}), other);
        row("no children", "0/Children", absent, "Film," + other);
        row("children a text", "0/Children", QJsonValue("x"), "Film," + other);
        row("newness a text", "0/NewDelivery", QJsonValue("true"), other);
        row("no name", "0/Name", absent, "(Feature(Sequence m1,Sequence m2),Untitled IMP.1)," + other);
        row("IMP a number", "0/Children/0", QJsonValue(3), "Film(,Untitled IMP.1)," + other);
        row("IMP's children an object", "0/Children/0/Children", QJsonValue(QJsonObject{{"a", 1}}),
            "Film(Feature,Untitled IMP.1)," + other);
        row("CPL null", "0/Children/0/Children/0", QJsonValue(), "Film(Feature(,Sequence m2),Untitled IMP.1)," + other);
        const QStringList keys{"Video",       "Audio",    "DescriptiveMetadata",
                               "CPLGroups",   "CPLToken", "CPLMobID",
                               "CPLFPSValue", "Mutable",  "Type"};
        for (const QString& key : keys) {
            const QString path = "0/Children/0/Children/0/" + key;
            row(qPrintable(key + " absent"), path, absent, whole + other);
            row(qPrintable(key + " a number"), path, QJsonValue(1.5), whole + other);
            row(qPrintable(key + " an array"), path, QJsonValue(QJsonArray{1, "x"}), whole + other);
            row(qPrintable(key + " an object"), path, QJsonValue(QJsonObject{{"Multiple Audio Mix", 3}}),
                whole + other);
        }
    }

    void damageCostsNoMoreThanTheDamagedItem()
    {
        const auto [path, damage, tree] = support::fetched<QString, QJsonValue, QString>();
        ModelFixture f;
        buildFilm(f);
        f.newImp(f.newDelivery("Other"));
        const QJsonArray good = saved(f);
        const QJsonArray damaged = damagedAt(good, path.split('/'), damage).toArray();
        QVERIFY(damaged != good);
        f.restart();
        restore(f, damaged);
        QCOMPARE(outline(*f.model), tree);
        for (const int role : {0, 1, 2, 257, 258, 259, 260, 261, 262, 263, 264, 265, 266, 267, 268, 284, 286, 287})
            visitAll(*f.model, {}, role);
        saved(f);
    }

private:
    static QJsonValue damagedAt(const QJsonValue& value, QStringList path, const QJsonValue& damage)
    {
        if (path.isEmpty())
            return damage;
        const QString step = path.takeFirst();
        if (value.isArray()) {
            QJsonArray array = value.toArray();
            array[step.toInt()] = damagedAt(array[step.toInt()], path, damage);
            return array;
        }
        QJsonObject object = value.toObject();
        const QJsonValue inner = damagedAt(object[step], path, damage);
        if (inner.isUndefined())
            object.remove(step);
        else
            object[step] = inner;
        return object;
    }

    static QString outline(const Model& model) { return support::shape(model, {}, Model::NameRole); }

    static void visitAll(const Model& model, const QModelIndex& parent, int role)
    {
        for (int row = 0; row < model.rowCount(parent); ++row) {
            const QModelIndex index = model.index(row, 0, parent);
            index.data(role);
            visitAll(model, index, role);
        }
    }
};

STRATACUT_TEST_MAIN(TestSavedState)
#include "tst_saved_state.moc"
