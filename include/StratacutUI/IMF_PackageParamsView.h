#pragma once

#include "StratacutUI/Export.h"

#include <QPersistentModelIndex>
#include <QVector>
#include <QWidget>

#include <memory>
#include <vector>

class AudioMappingWidget;
class MXE_Bridge;
class QAbstractItemModel;
class QItemSelection;
class QJsonObject;
class QStackedWidget;
class QTextEdit;

namespace ViewDeckQt
{
class AbstractParamWidget;
class PWSetDirectory;
} // namespace ViewDeckQt

/// Shows and edits the parameters and metadata of the item selected in the package tree, on a page for its kind. Every
/// parameter widget has an identifier, which stands for a key of the item's document. It reads and writes items through
/// the model's roles alone. User-interface thread only.
class STRATACUTUI_EXPORT IMF_PackageParamsView : public QWidget
{
    Q_OBJECT
public:
    /// @param model must outlive the view.
    explicit IMF_PackageParamsView(QAbstractItemModel* model, QWidget* parent = nullptr);
    ~IMF_PackageParamsView() override;

    /// Replaces the media engine of the audio tools, which the view owns.
    void setMXEBridge(std::unique_ptr<MXE_Bridge> bridge);

    /// The document's key for a parameter widget; empty for an identifier that stands for none.
    static QString id2jsonKey(const QString& id);

    /// Writes what the widgets show into a document, by its "Type"; any other type is left alone. Every value is
    /// written as text.
    void write(QJsonObject& document) const;
    void writeCPL(QJsonObject& document) const;
    /// Writes the metadata that the CPL page shows.
    void writeIMF(QJsonObject& document) const;
    /// Writes the IMP page's name, and the metadata that the CPL page shows.
    void writeIMP(QJsonObject& document) const;
    void setParamValue(QJsonObject& document, const ViewDeckQt::AbstractParamWidget* widget) const;
    /// Replaces the section of the document that a container stands for; nothing happens without such a container.
    void containerWidgetToJson(QJsonObject& document, const QString& containerId) const;

    bool event(QEvent* event) override;

Q_SIGNALS:
    /// The user changed a value of this item, and the model was told.
    void valueChanged(const QModelIndex& index);
    /// The user wants to choose the folder of this deliverable.
    void setDeliverableDirPathClickedWithIndex(const QModelIndex& index);

public Q_SLOTS:
    void onSelectionChanged(const QItemSelection& selected, const QItemSelection& deselected);
    void onValueChanged(const QString& id, const QVariant& value);
    void onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles = {});
    /// Lets the user group the tracks of the current CPL's sequence, in a modal dialog; nothing without a sequence.
    void openAudioTrackGrouping();
    /// Shows the current item anew, or the hint where it has gone.
    void reload();

protected:
    bool focusNextPrevChild(bool next) override;

private:
    enum Page { CplPage, ImpPage, DeliverablePage, HintPage, EmptyPage, PageCount };
    /// What a page is made of, see the definition.
    struct Param;
    class Builder;

    QWidget* createCPLWidget();
    QWidget* createIMPWidget();
    QWidget* createIMFWidget();
    QWidget* createPassiveHint();
    void createParamWidget(ViewDeckQt::AbstractParamWidget* widget);
    void createParamWidget(ViewDeckQt::PWSetDirectory* widget);

    QWidget* currentStackWidget(const QModelIndex& index) const;
    void switchView();
    void updateView();
    void setReadOnly(bool readOnly);
    /// Offers the mapping widget what the current CPL's sequence has now; any other widget is left alone.
    void updateAudioMapping(ViewDeckQt::AbstractParamWidget* widget);
    void showMapping(AudioMappingWidget& mapping, const QJsonObject& document);
    void showValue(ViewDeckQt::AbstractParamWidget& widget, const QJsonObject& document);
    void writeUnfinished();
    void setPathOf(const QModelIndex& index, const QVariant& path);
    void writeValue(const QString& id, const QVariant& value);
    void onRowsRemoved();
    void updatePalette();
    static bool isRequiredMetadata(const QString& id);
    void onRequiredMetadataChanged(const QString& id, const QVariant& value);
    void onSetPathButtonClicked();
    void validateTextField(const QString& id);

    QAbstractItemModel* m_model;
    QStackedWidget* m_stack;
    QWidget* m_cplPage;
    QWidget* m_impPage;
    QWidget* m_deliverablePage;
    QWidget* m_hintPage;
    QWidget* m_emptyPage;
    bool m_updating = false;
    QTextEdit* m_hint = nullptr;
    std::unique_ptr<MXE_Bridge> m_mxeBridge;
    std::vector<QWidget*> m_paletteWidgets;
    QPersistentModelIndex m_current;
};
