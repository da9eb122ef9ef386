#include "EntryColumn.h"
#include "StatePage.h"
#include "StratacutUI/STT_EntryWidget.h"
#include "StratacutUI/STT_MissingTranscriptWidget.h"
#include "StratacutUI/STT_SpeakerTextEdit.h"
#include "ViewDeckQt/PaletteManager.h"
#include "support/RecordingTranscriptInfo.h"
#include <QtWidgets>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setFont(QFont("DejaVu Sans", 10));
    QApplication::setStyle("Fusion");
    for (auto skin : {Palette::Skin::Dark, Palette::Skin::Light}) {
        const QString name = skin == Palette::Skin::Dark ? "dark" : "light";
        Palette::PaletteManager::Instance().setSkin(skin);
        support::RecordingTranscriptInfo info;
        info.source.segments = support::transcriptOf(40, 12);
        info.source.speakers = {{"1", "", "Ada Lovelace"},
                                {"2", "", ""},
                                {"3", "", "A very long speaker's name, indeed"},
                                {"4", "", "Grace"}};
        QTextEdit edit;
        edit.setFrameShape(QFrame::NoFrame);
        edit.setReadOnly(true);
        edit.resize(820, 520);
        edit.document()->setDefaultFont(QFont("Courier New", 12));
        auto* column = new EntryColumn(
            &edit,
            {[&](int s) { return QString::fromStdString(info.speakerText(info.source.segments[s].speakerKey)); },
             [&](int s) { return QString::fromStdString(info.timecodeText(info.source.segments[s].wordStarts[0])); }});
        const STT_MissingTranscript clips[] = {
            {"a", "Interview 03 – kitchen.mov", 0, STT_Transcription::Missing, 0, ""},
            {"b", "Interview 04.mov", 20000, STT_Transcription::Running, 42, ""},
            {"c", "Interview 05.mov", 20000, STT_Transcription::Waiting, 0, ""},
            {"d", "Interview 06.mov", 40000, STT_Transcription::Failed, 0,
             "The file Interview 06.mov cannot be read. Bring it back or relink the clip, then try again."}};
        column->beginRebuild();
        QTextCursor cursor(edit.document());
        int missing = 0;
        for (const auto& segment : info.source.segments) {
            if (segment.number % 3 == 0 && missing < 4) {
                if (cursor.position() > 0)
                    cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
                EntryColumn::layClipLine(cursor, clips[missing++], "01:00:00:00");
            }
            QTextBlockFormat format;
            format.setLeftMargin(column->gutterWidth());
            format.setTopMargin(3);
            format.setBottomMargin(3);
            cursor.insertBlock(format, QTextCharFormat());
            cursor.insertText(QString::fromStdString(segment.text));
            cursor.block().setUserState(segment.number);
        }
        column->endRebuild();
        edit.moveCursor(QTextCursor::Start);
        edit.show();
        app.processEvents();
        edit.verticalScrollBar()->setValue(0);
        app.processEvents();
        app.processEvents();
        edit.grab().save("/tmp/trlook_" + name + "_lines.png");
        column->entry(2)->speakerEdit()->beginEditing();
        QCursor::setPos(edit.mapToGlobal({300, 200}));
        edit.verticalScrollBar()->setValue(90);
        app.processEvents();
        edit.grab().save("/tmp/trlook_" + name + "_edit.png");
        StatePage page(&edit);
        for (auto state :
             {StatePage::State::NothingLoaded, StatePage::State::EmptyTranscript, StatePage::State::DatabaseOffline}) {
            page.showState(state);
            app.processEvents();
            edit.grab().save(QString("/tmp/trlook_%1_state%2.png").arg(name).arg(int(state)));
        }
    }
}
