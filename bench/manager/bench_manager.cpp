// The package manager's window over 1,000 deliverables, 10,000 IMPs and 100,000 CPLs: against a plain tree of equal
// shape, and what a user does most against the same in a tree of ten CPLs.

#include "support/IdleHost.h"
#include "support/Turns.h"

#include "StratacutUI/IMF_Bridges.h"
#include "StratacutUI/IMF_DataUtils.h"
#include "StratacutUI/IMF_ManagerWindow.h"
#include "StratacutUI/IMF_Node.h"
#include "StratacutUI/IMF_PackageDeliveryReader.h"
#include "StratacutUI/IMF_PackageMgrQtModel.h"
#include "StratacutUI/IMF_TreeView.h"
#include "StratacutUI/ImfDict.h"
#include "ViewDeckQt/PWTextInput.h"

#include <QApplication>
#include <QHeaderView>
#include <QJsonArray>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>

#include <functional>
#include <vector>

namespace
{
using Model = IMF_PackageMgrQtModel;
using turns::medians;
using turns::print;
using turns::timed;

struct Shape {
    int deliveries;
    int imps;
    int cpls;
};

constexpr Shape ten{1, 1, 10};
constexpr Shape large{1000, 10, 10};

QString cplName(int number)
{
    return QStringLiteral("Composition %1").arg(number);
}

QJsonObject deliveryDocument(const Shape& shape)
{
    QJsonArray cpls;
    for (int number = 0; number < shape.cpls; ++number) {
        QJsonObject cpl = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::CPL);
        cpl[ImfDict::Name] = cplName(number);
        QJsonObject metadata = cpl[ImfDict::DescriptiveMetadata].toObject();
        metadata[ImfDict::ContentTitle] = cplName(number);
        cpl[ImfDict::DescriptiveMetadata] = metadata;
        cpls.append(cpl);
    }
    QJsonArray imps;
    for (int number = 0; number < shape.imps; ++number) {
        QJsonObject imp = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::IMP);
        imp[ImfDict::Name] = QStringLiteral("Package %1").arg(number);
        imp[ImfDict::Children] = cpls;
        imps.append(imp);
    }
    QJsonObject delivery = IMF_Utils::getDefaultJsonObject(IMF_PackageMgr::Delivery);
    delivery[ImfDict::Path] = QStringLiteral("/deliveries");
    delivery[ImfDict::Children] = imps;
    return delivery;
}

std::unique_ptr<Model> packages(const Shape& shape)
{
    auto model = std::make_unique<Model>();
    const QJsonObject document = deliveryDocument(shape);
    for (int number = 0; number < shape.deliveries; ++number)
        model->push_back({}, IMF_PackageDeliveryReader::getDeliveryNodeFromJson(document, QByteArray::number(number)));
    return model;
}

/// The same rows as texts, as a program without package data would show them.
std::unique_ptr<QStandardItemModel> texts(const Shape& shape)
{
    auto model = std::make_unique<QStandardItemModel>();
    for (int delivery = 0; delivery < shape.deliveries; ++delivery) {
        auto* deliveryItem = new QStandardItem(QStringLiteral("IMF_name"));
        model->appendRow({deliveryItem, new QStandardItem});
        for (int imp = 0; imp < shape.imps; ++imp) {
            auto* impItem = new QStandardItem(QStringLiteral("Package %1").arg(imp));
            deliveryItem->appendRow({impItem, new QStandardItem});
            for (int cpl = 0; cpl < shape.cpls; ++cpl)
                impItem->appendRow({new QStandardItem(cplName(cpl)), new QStandardItem});
        }
    }
    return model;
}

struct TreeTimes {
    double expand;
    double scroll;
    double insert;
};

TreeTimes timesOf(QTreeView& tree, const std::function<void()>& insert)
{
    TreeTimes times{};
    times.expand = turns::median(5, timed([&tree](int) {
                                     tree.collapseAll();
                                     tree.expandAll();
                                 }));
    times.scroll = turns::median(200, timed([&tree](int round) { tree.verticalScrollBar()->setValue(100 * round); }));
    times.insert = turns::median(9, timed([&insert](int) { insert(); }));
    return times;
}

struct Window {
    explicit Window(const Shape& shape) : model(packages(shape))
    {
        opening = turns::milliseconds([this] {
            window = std::make_unique<IMF_ManagerWindow>(model.get(), QModelIndex());
            window->resize(1000, 760);
            window->show();
        });
        tree = window->findChild<IMF_TreeView*>();
    }

    /// A CPL in the middle of the tree.
    QModelIndex cpl(int row) const
    {
        const QModelIndex delivery = model->index(model->rowCount() / 2, 0);
        return model->index(row, 0, model->index(model->rowCount(delivery) / 2, 0, delivery));
    }

    void prepare()
    {
        tree->expandAll();
        tree->scrollTo(cpl(5));
        tree->select(cpl(0));
        QCoreApplication::processEvents();
        const QList<ViewDeckQt::PWTextInput*> inputs = window->findChildren<ViewDeckQt::PWTextInput*>();
        for (ViewDeckQt::PWTextInput* input : inputs) {
            if (input->getId() == QLatin1String("id_content_title"))
                title = input->findChild<QLineEdit*>();
        }
    }

    void select(int round) const { tree->select(cpl(1 + round % 2)); }

    /// Typed and taken back in turn: the text keeps its length.
    void type(int round) const
    {
        QKeyEvent key(QEvent::KeyPress, round % 2 ? Qt::Key_Backspace : Qt::Key_X, {},
                      round % 2 ? QString() : QStringLiteral("x"));
        QCoreApplication::sendEvent(title, &key);
    }

    std::unique_ptr<Model> model;
    double opening = 0;
    std::unique_ptr<IMF_ManagerWindow> window;
    IMF_TreeView* tree = nullptr;
    QLineEdit* title = nullptr;
};

TreeTimes plainTree(double& opening)
{
    const std::unique_ptr<QStandardItemModel> model = texts(large);
    QTreeView tree;
    opening = turns::milliseconds([&] {
        tree.setUniformRowHeights(true);
        tree.setModel(model.get());
        tree.resize(360, 760);
        tree.show();
    });
    QStandardItem* parent = model->item(large.deliveries / 2)->child(0);
    return timesOf(tree, [parent] { parent->appendRow({new QStandardItem(cplName(0)), new QStandardItem}); });
}

void compareWithPlainTree(Window& window)
{
    double opening = 0;
    const TreeTimes peer = plainTree(opening);
    const std::shared_ptr<IMF_Node> imp = window.model->FromIndex(window.cpl(0).parent());
    const TreeTimes own = timesOf(*window.tree, [&window, &imp] { window.model->addCPLNode("mob", imp); });
    print("open the window on 100,000 CPLs, against a plain tree", {window.opening, opening}, "no limit: whole window");
    print("collapse and expand all 111,000 rows", {own.expand, peer.expand}, "2 x");
    print("scroll 100 rows and paint", {own.scroll, peer.scroll}, "3 x");
    print("insert a CPL among 100,000 shown", {own.insert, peer.insert}, "3 x");
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    IMF_MXE_bridge::Initialize(std::make_unique<IdleEngine>());
    // The first window of a process also pays for fonts and images.
    Window(ten).window.reset();
    Window few(ten);
    Window many(large);
    print("open the window, against one on ten CPLs", {many.opening, few.opening}, "2 x");
    compareWithPlainTree(many);
    few.prepare();
    many.prepare();
    constexpr int rounds = 400;
    print("select a CPL, against the same among ten",
          medians(rounds, timed([&many](int round) { many.select(round); }),
                  timed([&few](int round) { few.select(round); })),
          "1.2 x");
    print(
        "type in a field, against the same among ten",
        medians(rounds, timed([&many](int round) { many.type(round); }), timed([&few](int round) { few.type(round); })),
        "1.2 x");
    return 0;
}
