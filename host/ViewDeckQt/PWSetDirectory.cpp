#include "ViewDeckQt/PWSetDirectory.h"

#include "ParamRow.h"
#include "ParamTitle.h"

#include "NvCore/NvText.h"
#include "ViewDeckQt/QFFLineEditQt.h"
#include "ViewDeckQt/StyledButton.h"

#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

namespace ViewDeckQt
{

namespace
{
// The one folder that is dragged; empty where something else is.
QString draggedFolder(const QDropEvent& event)
{
    const QList<QUrl> urls = event.mimeData()->urls();
    const QString path = urls.size() == 1 ? urls.first().toLocalFile() : QString();
    return !path.isEmpty() && QFileInfo(path).isDir() ? path : QString();
}
} // namespace

PWSetDirectory::PWSetDirectory(QWidget* parent, const QString& id)
    : AbstractParamWidget(id, parent),
      m_path(new QFFLineEditQt(this)),
      m_button(new StyledButton(stx_func("Set Path..."), this))
{
    m_title = layOutParam(this, stx_func("Folder:"), {m_path, m_button});
    m_path->setElideMode(Qt::ElideMiddle);
    m_path->installEventFilter(this);
    m_button->setAccessibleDescription(stx_func("Choose the folder in a dialog."));
    connect(m_path, &QFFLineEditQt::textCommitted, this, &PWSetDirectory::valueChanged);
    connect(m_button, &QPushButton::clicked, this, &PWSetDirectory::setPathButtonClicked);
}

QVariant PWSetDirectory::getValue() const
{
    return m_path->text();
}

void PWSetDirectory::setValue(const QVariant& value)
{
    m_path->showText(value.toString());
}

void PWSetDirectory::setReadOnly(bool readOnly)
{
    AbstractParamWidget::setReadOnly(readOnly);
    if (readOnly)
        m_path->revert();
    m_path->setReadOnly(readOnly);
    m_button->setVisible(!readOnly);
}

void PWSetDirectory::hilightTitle(bool highlighted)
{
    m_title->setHighlighted(highlighted);
}

bool PWSetDirectory::isTitleHilighted() const
{
    return m_title->isHighlighted();
}

bool PWSetDirectory::eventFilter(QObject* watched, QEvent* event)
{
    const bool drags = event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove;
    if (isReadOnly() || (!drags && event->type() != QEvent::Drop))
        return AbstractParamWidget::eventFilter(watched, event);
    auto* dropped = static_cast<QDropEvent*>(event);
    const QString folder = draggedFolder(*dropped);
    if (folder.isEmpty())
        return AbstractParamWidget::eventFilter(watched, event);
    dropped->setDropAction(Qt::CopyAction);
    dropped->accept();
    if (!drags)
        drop(folder);
    return true;
}

void PWSetDirectory::drop(const QString& folder)
{
    m_path->revert();
    if (folder == m_path->text())
        return;
    m_path->showText(folder);
    emit valueChanged(folder);
}

} // namespace ViewDeckQt
