#pragma once

#include "StratacutUI/Export.h"
#include "StratacutUI/ITrackGroupingManger.h"
#include "ViewDeckQt/AbstractParamWidget.h"

#include <QList>

#include <memory>

class MappingChoices;
class QVBoxLayout;
class TrackMappingWidget;

/// Maps a sequence's audio onto the numbered audio tracks of a composition: row i says what feeds track A(i+1), how it
/// is mixed and, while the toggle "/Stratacut/IMFMCAMetadata" is on, which language and kind of content it carries.
/// There is always at least one row. The toggle must not change while the widget lives. User-interface thread.
///
/// A source or mix mode that the grouping manager does not offer, such as a group that was removed, stays in its row,
/// marked as missing, and in the value until the user picks another.
class STRATACUTUI_EXPORT AudioMappingWidget : public ViewDeckQt::AbstractParamWidget
{
    Q_OBJECT

public:
    /// @param name the parameter's id.
    /// @param manager offers sources and mix modes; owned from here on. Null: there is nothing to choose from.
    AudioMappingWidget(const QString& name, std::unique_ptr<ITrackGroupingManger> manager, QWidget* parent);
    ~AudioMappingWidget() override;

    /// A QJsonObject: "AudioMapping", one object a row; "Groups" and "AllActiveTracks", as the manager knows them.
    QVariant getValue() const override;

    /// Shows a mapping and reports nothing; but where there is no row in it, leaves one fresh row and reports that.
    /// @param value the document of a CPL, or a mapping as getValue gives it. Anything else, a mapping that fails its
    ///        check included, counts as one without rows.
    void setValue(const QVariant& value) override;
    void setReadOnly(bool readOnly) override;

    /// Replaces the manager and offers the new one's choices in every row; rows keep what was chosen in them.
    void setTrackGroupingManager(std::unique_ptr<ITrackGroupingManger> manager);

public Q_SLOTS:
    /// Inserts a fresh row. @param index 0 to the number of rows. @param notify report the change.
    void insertTrackMapping(int index, bool notify);
    /// Removes a row. @param index one outside of the list removes nothing. @param notify report the change.
    void removeTrackMapping(int index, bool notify);
    /// Removes a row and reports it, unless it is the only one.
    void onRemoveButtonClicked(int index);
    /// Reports the present value.
    void onTrackMappingChanged();

private:
    int findIndex(const TrackMappingWidget* row) const;
    void resetTrackMapping();
    void validateWidgets();

    void insertRow(int index);
    void enterTabOrder(const TrackMappingWidget* row, int index);
    void onAddButtonClicked(int index);
    void revealLater(TrackMappingWidget* row);
    void moveFocusFrom(int index);

    std::unique_ptr<ITrackGroupingManger> m_manager;
    QList<TrackMappingWidget*> m_rows;
    QVBoxLayout* m_layout;
    std::unique_ptr<MappingChoices> m_choices;
};
