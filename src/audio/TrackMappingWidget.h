#pragma once

#include "MappingChoices.h"

#include <QJsonObject>
#include <QWidget>

#include <functional>

class AudioChoiceBox;
class IMF_AudioMetadataDialog;
class ITrackGroupingManger;
class QLabel;
class QPushButton;

/// A row of the audio mapping: what feeds one audio track of the composition, and how.
class TrackMappingWidget : public QWidget
{
    Q_OBJECT

public:
    using GetIdProc = std::function<int(const TrackMappingWidget*)>;

    /// @param manager offers the choices; must outlive the row or be replaced. May be null.
    /// @param getIdProc answers the row's present index.
    /// @param choices the manager's, kept up to date by the owner, which outlives the row.
    TrackMappingWidget(ITrackGroupingManger* manager, GetIdProc getIdProc, const MappingChoices& choices,
                       QWidget* parent);
    ~TrackMappingWidget() override;

    /// Offers another manager's choices; what was chosen stays, as missing where it is not among them.
    void setTrackGroupingManager(ITrackGroupingManger* manager);

    QJsonObject rowObject() const;
    void setRowObject(const QJsonObject& object);

    /// Names the row. @param number counted from 1. @param labelWidth what the longest name of all rows needs.
    void setNumber(int number, int labelWidth);
    static QString trackName(int number);

    void setReadOnly(bool readOnly);

    QPushButton* plusButton() const { return m_plusButton; }

    QPushButton* minusButton() const { return m_minusButton; }

    /// What the Tab key visits, in order.
    QWidgetList tabStops() const;

Q_SIGNALS:
    void plusButtonClicked(int index);
    void minusButtonClicked(int index);
    /// @param id the entry that the user chose, counted from 0.
    void sourceTrackChanged(int index, int id);
    void destTrackChanged(int index, int id);
    void metadataChanged();

public Q_SLOTS:
    void openAudioMetadata();

protected:
    void changeEvent(QEvent* event) override;

private:
    void createWidgets();
    void createMetadataButton();
    void layOut();
    void connectAll();

    int index() const { return m_getIdProc(this); }

    QString source() const;
    void showSource(const QString& source);
    void fillChoices();
    void showFixedMixMode(const QString& mode);
    void setMetadata(const QJsonObject& metadata);
    /// What the user has to look at in this row; empty where all is well.
    QString warning() const;
    void updateWarning();
    void updateIcons();
    void updateMetadataToolTip();
    void nameForAssistance(const QString& trackName);

    ITrackGroupingManger* m_manager;
    GetIdProc m_getIdProc;
    AudioChoiceBox* m_trackAndGroup = nullptr;
    QLabel* m_trackLabel = nullptr;
    AudioChoiceBox* m_mapTo = nullptr;
    QPushButton* m_plusButton = nullptr;
    QPushButton* m_minusButton = nullptr;
    QLabel* m_iconLabel = nullptr;
    QJsonObject m_metadata;
    QPushButton* m_metadataButton = nullptr;
    IMF_AudioMetadataDialog* m_metadataDialog = nullptr;

    const MappingChoices& m_choices;
    int m_number = 0;
    bool m_readOnly = false;
    /// Whether they come from a stored row or the user; else they are the first of their lists.
    bool m_sourceGiven = false;
    bool m_mixModeGiven = false;
    bool m_hasFixedMixMode = false;
};
