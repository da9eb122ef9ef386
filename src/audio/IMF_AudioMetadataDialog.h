#pragma once

#include "ViewDeckQt/ManagedDialog.h"

#include <QDialog>
#include <QJsonObject>

class AudioChoiceBox;
class QHBoxLayout;
class QLabel;
class QPushButton;

namespace ViewDeckQt
{
class PWDiscrete;
}

/// Asks for the multi-channel audio metadata of one audio track: the language it is spoken in, as an RFC 5646 tag, and
/// its kind of content. What can be chosen comes from two tables in the library's resources. Run it modally.
class IMF_AudioMetadataDialog : public ViewDeckQt::ManagedDialog<QDialog>
{
    Q_OBJECT

public:
    /// When the window's contents are made. There is one dialog for each row of a mapping, and few are ever opened.
    enum class Contents { OnFirstUse, AtOnce };

    IMF_AudioMetadataDialog(const QString& trackName, const QJsonObject& metadata, QWidget* parent,
                            Contents contents = Contents::OnFirstUse);
    ~IMF_AudioMetadataDialog() override;

    /// What a new track carries.
    static QJsonObject defaultMetadata();

    void setTrackName(const QString& trackName);

    /// Shows the metadata: an object with "RFC5646SpokenLanguage" and "AudioContentKind".
    void setMetadata(const QJsonObject& metadata);

    /// The metadata last set or, after the dialog was accepted, chosen.
    QJsonObject metadata() const { return m_metadata; }

    /// @name What is shown for the metadata, for example "en (English)"; a code that its table lacks stands alone.
    /// @{
    QString languageText() const;
    /// Empty unless the language tag has exactly two parts.
    QString regionText() const;
    /// Empty where there is none.
    QString contentKindText() const;
    /// @}

    /// Whether the tables have every part of the language tag.
    bool isLanguageTagListed() const;

    /// A read-only dialog is accepted with the metadata as it was set.
    void setReadOnly(bool readOnly);

    void setVisible(bool visible) override;

public Q_SLOTS:
    void populateRegionComboBox(const QVariant& language);
    void onOkButtonClicked();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void createContents();
    QHBoxLayout* createLanguageRow();
    QHBoxLayout* createButtonRow();
    void fillContentKinds();
    void fillLanguages();
    void showMetadata();
    void showNote();
    void enableRegion();

    QLabel* m_heading = nullptr;
    QJsonObject m_metadata;
    ViewDeckQt::PWDiscrete* m_language = nullptr;
    AudioChoiceBox* m_region = nullptr;
    ViewDeckQt::PWDiscrete* m_contentKind = nullptr;
    QPushButton* m_cancel = nullptr;

    QPushButton* m_ok = nullptr;
    QLabel* m_note = nullptr;
    QString m_trackName;
    bool m_hasRegions = false;
    bool m_readOnly = false;
};
