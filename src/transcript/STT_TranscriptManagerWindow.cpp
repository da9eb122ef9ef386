#include "StratacutUI/STT_TranscriptManagerWindow.h"

#include "EntryColumn.h"
#include "NvCore/NvText.h"
#include "SegmentTimeIndex.h"
#include "StatePage.h"
#include "StratacutUI/STT_EntryWidget.h"
#include "StratacutUI/STT_SearchWidget.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "ViewDeckQt/PaletteManager.h"
#include "ViewDeckQt/StyledIconButton.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QFontDialog>
#include <QMenu>
#include <QVBoxLayout>

#include <utility>

using Window = STT_TranscriptManagerWindow;

namespace
{
constexpr int toolBarMargin = 6;
constexpr int defaultFontSize = 12;

QString imageSet()
{
    return QStringLiteral("iconsV2");
}
} // namespace

/// A row of the menu; one without a text is a separator.
struct Window::MenuEntry {
    const char* text = nullptr;
    void (Window::*slot)() = nullptr;
    QAction* Window::*action = nullptr;
    bool STT_Visibilities::*checked = nullptr;
};

Window::STT_TranscriptManagerWindow(std::unique_ptr<ITranscriptWindowInfo> host, QWidget* parent)
    : QWidget(parent),
      info(std::move(host)),
      m_index(std::make_unique<SegmentTimeIndex>(*info)),
      m_isLightSkin(Palette::PaletteManager::Instance().skin() == Palette::Skin::Light),
      m_visibilities(info->storedVisibilities())
{
    setWindowTitle(stx_func("Transcript"));
    createWidgets();
    createEntryColumn();
    createMenu();
    layOut();
    connectAll();
    QFont font(QStringLiteral("Courier New"), defaultFontSize);
    font.setStyleHint(QFont::Monospace);
    if (!info->storedFont(font))
        info->storeFont(font);
    useFont(font);
    showHighlightColor();
}

/// A speaker field in which the user types loses the focus when it is destroyed, after the host is gone.
Window::~STT_TranscriptManagerWindow()
{
    closeSpeakerMenu();
    delete m_entryColumn;
}

void Window::createWidgets()
{
    m_gangButton = createButton("m_gangButton", nullptr, "Gang Transcript to Source/Record Monitor");
    m_monitorButton = createButton("m_monitorButton", nullptr, "Toggle display of transcription for Source or Record");
    m_trackButton =
        createButton("m_trackButton", "General/select_tracks.png", "Display/Select Tracks for Current Transcription");
    m_menuButton = createButton("m_menuButton", "General/fast_menu.png", "Transcript menu");
    showGangImage();
    showMonitorImage();
    m_textEdit = new STT_TranscriptTextEdit(this);
    m_textEdit->setObjectName(QStringLiteral("m_textEdit"));
    m_textEdit->setAccessibleName(stx_func("Transcript"));
    m_boldedCursor = QTextCursor(m_textEdit->document());
    m_statePage = new StatePage(m_textEdit);
    setFocusProxy(m_textEdit);
}

ViewDeckQt::StyledIconButton* Window::createButton(const char* name, const char* image, const char* toolTip)
{
    auto* button = new ViewDeckQt::StyledIconButton(this);
    button->setObjectName(QLatin1String(name));
    button->setToolTip(stx_func(toolTip));
    if (image)
        button->setImage(imageSet(), QLatin1String(image));
    return button;
}

void Window::createEntryColumn()
{
    m_entryColumn = new EntryColumn(m_textEdit, {[this](int segment) { return speakerText(segment); },
                                                 [this](int segment) { return timecodeText(segment); }});
    m_entryColumn->setVisibilities(m_visibilities);
    connect(m_textEdit, &STT_TranscriptTextEdit::visibleLinesChanged, m_entryColumn, &EntryColumn::sync);
    connect(m_entryColumn, &EntryColumn::speakerNameChanged, this, &Window::SpeakerNameChangedSlot);
    connect(m_entryColumn, &EntryColumn::transcribeRequested, this, &Window::TranscribeSlot);
    connect(m_entryColumn, &EntryColumn::speakerMenuRequested, this, &Window::openSpeakerMenu);
    connect(m_entryColumn, &EntryColumn::speakerMenuKeyPressed, this, &Window::openSpeakerMenuByKey);
}

void Window::createMenu()
{
    const MenuEntry entries[] = {
        {"Transcribe Remaining Clips", &Window::TranscribeAllMissingSlot, &Window::m_transcribeAll},
        {},
        {"Create Script from Clip", &Window::scriptFromClipSlot},
        {"Create SubCap...", &Window::createSubcapSlot},
        {"Export Transcript", &Window::exportTranscriptSlot},
        {"Export SubCap", &Window::exportSubcapSlot},
        {},
        {"Show Timecode", &Window::SetTimecodeVisibilitySlot, &Window::m_showTimecode, &STT_Visibilities::timecode},
        {"Show Speaker", &Window::SetSpeakerVisibilitySlot, &Window::m_showSpeaker, &STT_Visibilities::speaker},
        {"Show Not Transcribed", &Window::SetMissingVisibilitySlot, &Window::m_showMissing,
         &STT_Visibilities::notTranscribed},
        {},
        {"Set Font", &Window::setFontSlot},
    };
    m_menu = new QMenu(this);
    for (const MenuEntry& entry : entries) {
        if (!entry.text) {
            m_menu->addSeparator();
            continue;
        }
        QAction* action = m_menu->addAction(stx_func(entry.text));
        connect(action, &QAction::triggered, this, entry.slot);
        if (entry.action)
            this->*entry.action = action;
        action->setCheckable(entry.checked);
        action->setChecked(entry.checked && m_visibilities.*entry.checked);
    }
}

void Window::layOut()
{
    auto* toolBar = new QHBoxLayout;
    toolBar->setContentsMargins(toolBarMargin, toolBarMargin / 2, toolBarMargin, toolBarMargin / 2);
    toolBar->setSpacing(2);
    for (ViewDeckQt::StyledIconButton* button : {m_gangButton, m_monitorButton, m_trackButton})
        toolBar->addWidget(button);
    toolBar->addSpacing(toolBarMargin);
    auto* search = new STT_SearchWidget(this);
    toolBar->addWidget(search, 1);
    toolBar->addStretch();
    toolBar->addWidget(m_menuButton);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(toolBar);
    layout->addWidget(m_textEdit);
    // The keyboard goes along the tool bar, then into the text.
    QWidget* before = m_trackButton;
    const QList<QWidget*> parts = search->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* part : parts) {
        if (part->focusPolicy() & Qt::TabFocus)
            setTabOrder(std::exchange(before, part), part);
    }
}

void Window::connectAll()
{
    using Text = STT_TranscriptTextEdit;
    using Button = ViewDeckQt::StyledIconButton;
    connect(m_textEdit, &Text::clicked, this, &Window::TranscriptTextClickedSlot);
    connect(m_textEdit, &Text::doubleClicked, this, &Window::TranscriptTextDoubleClickedSlot);
    connect(m_textEdit, &Text::arrowKeyPressed, this, &Window::ArrowKeyPressedSlot);
    connect(m_textEdit, &Text::spacebarPressed, this, &Window::SpacebarPressedSlot);
    connect(m_textEdit, &Text::selectionChanged, this, &Window::refreshSlot);
    connect(m_textEdit->document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
            &Window::DocumentSizeChangedSlot);
    connect(m_gangButton, &Button::clicked, this, &Window::GangButtonClickedSlot);
    connect(m_monitorButton, &Button::clicked, this, &Window::SourceRecordMonChange);
    connect(m_trackButton, &Button::clicked, this, &Window::onTrackSelectionClicked);
    connect(m_menuButton, &Button::clicked, this, &Window::FastMenuSlot);
    // The other monitor has other material.
    connect(this, &Window::monChanged, this, &Window::UpdateTranscriptWindow);
}

QList<STT_EntryWidget*> Window::entryWidgets() const
{
    return m_entryColumn->entries();
}

QList<STT_MissingTranscriptWidget*> Window::missingWidgets() const
{
    return m_entryColumn->clipLines();
}

void Window::showGangImage()
{
    m_gangButton->setImage(imageSet(),
                           m_isGangOn ? QStringLiteral("/General/gang.png") : QStringLiteral("/General/gang_off.png"));
}

void Window::showMonitorImage()
{
    m_monitorButton->setImage(imageSet(), m_showsRecord ? QStringLiteral("/General/toggle_source_record_green.png")
                                                        : QStringLiteral("/General/toggle_source_record.png"));
}

void Window::setLightSkin(bool light)
{
    m_isLightSkin = light;
    showHighlightColor();
    checkSelection();
}

QColor Window::GetHighlightColor() const
{
    if (!m_showsRecord)
        return {43, 130, 180};
    return m_isLightSkin ? QColor(0, 165, 131) : QColor(0, 114, 90);
}

QColor Window::GetBoldColor() const
{
    return m_showsRecord ? QColor(0, 255, 148) : QColor(0, 216, 255);
}

void Window::showHighlightColor()
{
    QPalette palette = m_textEdit->palette();
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        palette.setColor(group, QPalette::Highlight, GetHighlightColor());
    m_textEdit->setPalette(palette);
}

void Window::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    info->prepareTranscript();
    UpdateTranscriptWindow();
}

void Window::SourceRecordMonChange()
{
    m_showsRecord = !m_showsRecord;
    showMonitorImage();
    info->showMonitor(m_showsRecord);
    // What is known is the other monitor's.
    m_markIn = m_markOut = m_stoppedAt = -1;
    m_frame = -1;
    emit monChanged();
    showHighlightColor();
    updateMarkSelection();
    checkSelection();
}

void Window::onTrackSelectionClicked()
{
    emit selectTracks(m_trackButton);
}

void Window::handleShortcuts(QString type)
{
    if (type == QLatin1String("GangMode")) {
        GangButtonClickedSlot();
        m_gangButton->repaint();
    } else if (type == QLatin1String("ToggleSourceRecord")) {
        SourceRecordMonChange();
        m_monitorButton->repaint();
    }
}

void Window::FastMenuSlot()
{
    m_transcribeAll->setEnabled(info->countOfRemainingClips() > 0);
    m_menu->popup(m_menuButton->mapToGlobal(QPoint(0, m_menuButton->height())));
}

void Window::SetTimecodeVisibilitySlot()
{
    m_visibilities.timecode = m_showTimecode->isChecked();
    showVisibilities();
    info->storeTimecodeVisibility(m_visibilities.timecode);
}

void Window::SetSpeakerVisibilitySlot()
{
    m_visibilities.speaker = m_showSpeaker->isChecked();
    showVisibilities();
    info->storeSpeakerVisibility(m_visibilities.speaker);
}

void Window::SetMissingVisibilitySlot()
{
    m_visibilities.notTranscribed = m_showMissing->isChecked();
    hideMissingLines();
    showState();
    showVisibilities();
    info->storeNotTranscribedVisibility(m_visibilities.notTranscribed);
}

void Window::setFontSlot()
{
    auto* dialog = new QFontDialog(m_textEdit->document()->defaultFont(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFontDialog::fontSelected, this, [this](const QFont& font) {
        useFont(font);
        info->storeFont(font);
    });
    dialog->open();
}

void Window::useFont(const QFont& font)
{
    m_textEdit->setTranscriptFont(font);
    mergeBlockFormats();
}

void Window::TranscribeSlot(const QString& mediaGuid)
{
    info->transcribe(mediaGuid.toStdString());
    refreshWindow(false);
}

void Window::TranscribeAllMissingSlot()
{
    TranscribeSlot(QStringLiteral("ALL"));
}

void Window::scriptFromClipSlot()
{
    info->createScriptFromClip();
}

void Window::exportTranscriptSlot()
{
    info->exportTranscript();
}

void Window::exportSubcapSlot()
{
    info->exportSubcaptions();
}

void Window::createSubcapSlot()
{
    info->createSubcaptions();
}
