#include "desk/app/ItemSession.h"

#include "desk/app/Console.h"

#include "ViewDeckQt/ManagedMessageBox.h"
#include "desk/media/Sequence.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace desk::app
{

using Model = IMF_PackageMgrQtModel;

namespace
{
QString pathOf(const QModelIndex& item)
{
    const QString name = item.data(Model::NameRole).toString();
    const QString shown = name.isEmpty() ? item.data().toString() : name;
    return item.parent().isValid() ? pathOf(item.parent()) + QLatin1Char('/') + shown : shown;
}

/// Every item in the order of the list.
void collect(const Model& model, const QModelIndex& parent, QModelIndexList& items)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        items += model.index(row, 0, parent);
        collect(model, items.last(), items);
    }
}

QStringList numbersOf(const QModelIndexList& items)
{
    QStringList numbers;
    for (const QModelIndex& item : items)
        numbers += ItemSession::numberOf(item);
    return numbers;
}

/// The CPL's name in the tree is its title where it has no other.
bool isCalled(const QModelIndex& item, const QString& path)
{
    const QString parent = item.parent().isValid() ? pathOf(item.parent()) + QLatin1Char('/') : QString();
    return pathOf(item) == path || parent + item.data().toString() == path;
}
} // namespace

ItemSession::ItemSession(const QCommandLineParser& parser)
    : m_host(std::make_unique<Host>(parser.value(QStringLiteral("profile"))))
{
}

ItemSession::~ItemSession()
{
    ViewDeckQt::ManagedMessageBox::setPresenter({});
}

Status ItemSession::open()
{
    Status claimed = m_host->claim();
    if (!claimed)
        return claimed;
    ViewDeckQt::ManagedMessageBox::setPresenter([this](const ViewDeckQt::ManagedMessageBox::Request& request) {
        m_messages += request.text.simplified();
        return request.defaultButton;
    });
    m_host->load();
    // What saved work says about itself is no failure of this command.
    const QStringList notices = m_host->takeNotices() + std::exchange(m_messages, {});
    for (const QString& notice : notices)
        console::note(notice);
    return {};
}

int ItemSession::run(const std::function<Status(ItemSession&)>& work, Keeping keeping)
{
    Status done = open();
    if (done)
        done = work(*this);
    if (done)
        done = said();
    if (done)
        done = keeping == Keeping::Work ? m_host->save() : m_host->saveBin();
    if (done)
        return exitCode::success;
    const Error& error = done.error();
    console::error(error.next.isEmpty() && error.file.isEmpty() && error.item.isEmpty() ? error.what
                                                                                        : error.sentence());
    return exitCode::failure;
}

Status ItemSession::said()
{
    if (m_messages.isEmpty())
        return {};
    return Error{{}, {}, {}, std::exchange(m_messages, {}).join(QLatin1Char(' ')), {}};
}

QString ItemSession::numberOf(const QModelIndex& item)
{
    const QString own = QString::number(item.row() + 1);
    return item.parent().isValid() ? numberOf(item.parent()) + QLatin1Char('.') + own : own;
}

Result<QModelIndex> ItemSession::find(const QString& item) const
{
    QModelIndexList all;
    collect(m_host->model(), {}, all);
    QModelIndexList named;
    for (const QModelIndex& index : qAsConst(all)) {
        if (isCalled(index, item))
            named += index;
    }
    if (named.size() > 1)
        return Error{{},
                     item,
                     {},
                     QStringLiteral("several items are called so"),
                     QStringLiteral("name one by its number: %1").arg(numbersOf(named).join(QStringLiteral(", ")))};
    if (!named.isEmpty())
        return named.first();
    for (const QModelIndex& index : qAsConst(all)) {
        if (numberOf(index) == item)
            return index;
    }
    return Error{{},
                 item,
                 {},
                 QStringLiteral("there is no such item"),
                 QStringLiteral("\"stratacut-desk list\" shows what there is")};
}

Result<QString> ItemSession::sequence(const QString& media)
{
    QStringList named;
    const QString path = QFileInfo(media).canonicalFilePath();
    const auto& items = m_host->library().items();
    for (const services::BinItem& item : items) {
        if (item.name == media || (!path.isEmpty() && item.path == path))
            named += item.id;
    }
    if (named.size() == 1)
        return named.first();
    if (named.size() > 1)
        return Error{{},
                     media,
                     {},
                     QStringLiteral("several sequences of the bin are called so"),
                     QStringLiteral("name one by its file")};
    const auto opened = media::openSequence(media);
    if (!opened)
        return opened.error();
    for (const QString& notice : opened->notices)
        console::note(notice);
    m_host->library().add(*opened);
    return opened->id;
}

} // namespace desk::app
