#pragma once

#include "StratacutUI/STT_EntryWidget.h"
#include "StratacutUI/STT_SpeakerTextEdit.h"
#include "StratacutUI/STT_TranscriptManagerWindow.h"
#include "StratacutUI/STT_TranscriptTextEdit.h"
#include "support/RecordingTranscriptInfo.h"

#include <QTest>

#include <memory>

/// A shown transcript window and the host that it asks.
class ShownTranscript
{
public:
    explicit ShownTranscript(support::RecordingTranscriptInfo::Material source,
                             support::RecordingTranscriptInfo::Material record = {})
    {
        auto owned = std::make_unique<support::RecordingTranscriptInfo>();
        info = owned.get();
        info->source = std::move(source);
        info->record = std::move(record);
        window = std::make_unique<STT_TranscriptManagerWindow>(std::move(owned));
        window->resize(800, 500);
        window->show();
        if (!QTest::qWaitForWindowActive(window.get()))
            qFatal("The transcript window did not become active.");
        window->UpdateTranscriptWindow();
        QCoreApplication::processEvents();
        info->calls.clear();
    }

    STT_TranscriptTextEdit& text() const { return *window->getTranscriptTextEdit(); }

    STT_EntryWidget* entry(int segment) const
    {
        const QList<STT_EntryWidget*> entries = window->entryWidgets();
        for (STT_EntryWidget* entry : entries) {
            if (entry->segment() == segment)
                return entry;
        }
        return nullptr;
    }

    STT_SpeakerTextEdit* speaker(int segment) const { return entry(segment)->speakerEdit(); }

    support::RecordingTranscriptInfo* info = nullptr;
    std::unique_ptr<STT_TranscriptManagerWindow> window;
};
