// The pages of the parameters view: which widgets stand where.

#include "StratacutUI/IMF_PackageParamsView.h"

#include "ParamIds.h"
#include "PassiveHint.h"

#include "NvCore/NvText.h"
#include "NvCore/Toggles.h"
#include "StratacutUI/AudioMappingWidget.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWExpandableContainer.h"
#include "ViewDeckQt/PWLabel.h"
#include "ViewDeckQt/PWMultiLineTextInput.h"
#include "ViewDeckQt/PWSetDirectory.h"
#include "ViewDeckQt/PWTextInput.h"
#include "ViewDeckQt/StyledButton.h"
#include "audio/IMF_TrackGroupingManager.h"

#include <QGroupBox>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

#include <initializer_list>

using namespace ViewDeckQt;

namespace
{
enum class Kind { Label, Discrete, Text, MultiLine, Directory };

constexpr int hintPointSize = 12;
constexpr int groupingWidth = 200;

/// The page itself, in a scroll area of its own.
QScrollArea* scrolling(QWidget* page)
{
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(page);
    return area;
}
} // namespace

struct IMF_PackageParamsView::Param {
    const char* id;
    const char* label;
    Kind kind;
};

/// Makes parameter widgets and tells the view of their changes.
class IMF_PackageParamsView::Builder
{
public:
    explicit Builder(IMF_PackageParamsView& view) : m_view(view) {}

    AbstractParamWidget* add(QVBoxLayout* layout, const Param& param)
    {
        AbstractParamWidget* widget = make(param);
        layout->addWidget(widget);
        return widget;
    }

    void add(PWContainer* container, std::initializer_list<Param> params)
    {
        for (const Param& param : params)
            container->addContent(make(param));
    }

    /// A container in another one, or in a page.
    PWExpandableContainer* section(PWContainer* container, const char* label, const char* id)
    {
        auto* made = new PWExpandableContainer(container, stx_func(label), QLatin1String(id));
        container->addContent(made);
        return made;
    }

    PWContainer* root(QVBoxLayout* layout)
    {
        auto* made = new PWContainer(nullptr, QLatin1String(ParamIds::ParamRoot));
        layout->addWidget(made);
        layout->addStretch();
        return made;
    }

    void addAudioMix(PWContainer* audio)
    {
        if (!TGL_GetToggle("/Stratacut/IMFMultipleAudioMix"))
            return add(audio, {{ParamIds::AudioMix, "Audio Mix:", Kind::Discrete}});
        auto* grouping = new StyledButton(stx_func("Audio Tracks Grouping"));
        grouping->setObjectName(QLatin1String(ParamIds::GroupingButton));
        grouping->setMaximumWidth(groupingWidth);
        connect(grouping, &QPushButton::clicked, &m_view, &IMF_PackageParamsView::openAudioTrackGrouping);
        auto* mapping =
            new AudioMappingWidget(QLatin1String(ParamIds::MultipleAudioMix),
                                   std::make_unique<IMF_TrackGroupingManager>(nullptr, QJsonArray()), nullptr);
        m_view.createParamWidget(mapping);
        for (QWidget* widget : {static_cast<QWidget*>(new QLabel(stx_func("Audio Mapping"))),
                                static_cast<QWidget*>(grouping), static_cast<QWidget*>(mapping)})
            audio->addContent(widget);
        grouping->parentWidget()->layout()->setAlignment(grouping, Qt::AlignLeft);
    }

    void addMetadata(PWContainer* root)
    {
        add(section(root, "Metadata", ParamIds::Metadata), {{ParamIds::Issuer, "Issuer:", Kind::Text},
                                                            {ParamIds::Creator, "Creator:", Kind::Label},
                                                            {ParamIds::Annotation, "Annotation:", Kind::MultiLine}});
    }

private:
    AbstractParamWidget* make(const Param& param)
    {
        AbstractParamWidget* widget = makeKind(param);
        m_view.createParamWidget(widget);
        return widget;
    }

    AbstractParamWidget* makeKind(const Param& param)
    {
        const QString id = QLatin1String(param.id);
        const QString label = stx_func(param.label);
        switch (param.kind) {
        case Kind::Label:
            return new PWLabel(nullptr, label, id, {});
        case Kind::Discrete:
            return new PWDiscrete(nullptr, label, id, {});
        case Kind::Text:
            return new PWTextInput(nullptr, label, id);
        case Kind::MultiLine:
            return new PWMultiLineTextInput(nullptr, label, id);
        case Kind::Directory:
            break;
        }
        auto* directory = new PWSetDirectory(nullptr, id);
        m_view.createParamWidget(directory);
        return directory;
    }

    IMF_PackageParamsView& m_view;
};

void IMF_PackageParamsView::createParamWidget(AbstractParamWidget* widget)
{
    connect(widget, &AbstractParamWidget::valueChanged, this,
            [this, id = widget->getId()](const QVariant& value) { onValueChanged(id, value); });
}

void IMF_PackageParamsView::createParamWidget(PWSetDirectory* widget)
{
    connect(widget, &PWSetDirectory::setPathButtonClicked, this, &IMF_PackageParamsView::onSetPathButtonClicked);
}

QWidget* IMF_PackageParamsView::createIMFWidget()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    Builder builder(*this);
    auto* type = static_cast<PWDiscrete*>(builder.add(layout, {ParamIds::ImfType, "Type:", Kind::Discrete}));
    type->setItems({stx_func("Original"), stx_func("Supplemental")}, -1);
    type->setEnabled(false);
    auto* name = static_cast<PWTextInput*>(builder.add(layout, {ParamIds::Name, "IMF Name:", Kind::Text}));
    // A rename goes to the host: once, not with each letter.
    name->setReporting(PWTextInput::Reporting::EndOfEdit);
    builder.add(layout, {ParamIds::SetDirectory, "", Kind::Directory});
    builder.addMetadata(builder.root(layout));
    return page;
}

QWidget* IMF_PackageParamsView::createIMPWidget()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    Builder builder(*this);
    builder.add(layout, {ParamIds::Name, "IMP Name:", Kind::Text});
    builder.addMetadata(builder.root(layout));
    return scrolling(page);
}

QWidget* IMF_PackageParamsView::createCPLWidget()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    Builder builder(*this);
    auto* group = new QGroupBox;
    auto* grouped = new QVBoxLayout(group);
    builder.add(grouped, {ParamIds::ContentTitle, "Content Title:", Kind::Text});
    builder.add(grouped, {ParamIds::FileName, "CPL file name:", Kind::Text});
    layout->addWidget(group);
    builder.add(layout, {ParamIds::AppPattern, "Application Pattern:", Kind::Discrete});
    PWContainer* encoding = builder.section(builder.root(layout), "Encoding", ParamIds::Encoding);
    PWContainer* video = builder.section(encoding, "Video", ParamIds::Video);
    builder.add(video, {{ParamIds::Compression, "Compression:", Kind::Label},
                        {ParamIds::FrameRate, "Frame Rate:", Kind::Label},
                        {ParamIds::CompressionProfile, "Compression Profile:", Kind::Discrete},
                        {ParamIds::Resolution, "Resolution:", Kind::Discrete},
                        {ParamIds::Colorimetry, "Colorimetry:", Kind::Discrete},
                        {ParamIds::ColorDepth, "Color Depth:", Kind::Discrete},
                        {ParamIds::StereoscopicSetting, "Stereoscopic Setting:", Kind::Discrete}});
    PWContainer* audio = builder.section(encoding, "Audio", ParamIds::Audio);
    builder.add(audio, {{ParamIds::AudioFormat, "Format:", Kind::Label},
                        {ParamIds::AudioSampleRate, "Sampling Rate:", Kind::Discrete},
                        {ParamIds::BitsPerSample, "Bit Depth:", Kind::Discrete}});
    builder.addAudioMix(audio);
    builder.add(builder.section(encoding, "Metadata", ParamIds::DescriptiveMetadata),
                {{ParamIds::Annotation, "Annotation:", Kind::MultiLine},
                 {ParamIds::Issuer, "Issuer:", Kind::Text},
                 {ParamIds::Creator, "Creator:", Kind::Label},
                 {ParamIds::ContentOriginator, "Content Originator:", Kind::Text},
                 {ParamIds::ContentKind, "Content Kind:", Kind::Discrete}});
    m_paletteWidgets = {encoding, video, audio};
    return scrolling(page);
}

QWidget* IMF_PackageParamsView::createPassiveHint()
{
    auto* hint = new PassiveHint(QStringLiteral("\n"), stx_func("Make a selection to display parameters and metadata"),
                                 hintPointSize);
    m_hint = hint;
    return PassiveHint::framed(hint);
}
