#pragma once

#include "StratacutUI/Export.h"

#include <QWidget>

/// A host for trying out the multi-channel audio metadata dialog: shows one embedded in itself.
class STRATACUTUI_EXPORT IMF_AudioMetadataDialogTest : public QWidget
{
    Q_OBJECT

public:
    explicit IMF_AudioMetadataDialogTest(QWidget* parent);
    ~IMF_AudioMetadataDialogTest() override;
};
