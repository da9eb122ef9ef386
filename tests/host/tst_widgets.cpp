#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWExpandableContainer.h"
#include "ViewDeckQt/PWLabel.h"
#include "ViewDeckQt/PWMultiLineTextInput.h"
#include "ViewDeckQt/PWSetDirectory.h"
#include "ViewDeckQt/PWTextInput.h"
#include "ViewDeckQt/PaletteManager.h"
#include "ViewDeckQt/StyledButton.h"
#include "host/WidgetWindow.h"
#include "support/TestMain.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QComboBox>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QUrl>

using namespace ViewDeckQt;
using namespace widgets;
using Palette::PaletteManager;
using Palette::Skin;
using Make = std::function<AbstractParamWidget*(QWidget*)>;

namespace
{
void everyKind()
{
    const support::Rows<Make> row;
    row("label", [](QWidget* parent) {
        return new PWLabel(parent, QStringLiteral("Creator:"), QStringLiteral("creator"), QString());
    });
    row("choice", makeDiscrete);
    row("text", [](QWidget* parent) { return makeInput(parent); });
    row("text box", [](QWidget* parent) {
        return new PWMultiLineTextInput(parent, QStringLiteral("Annotation:"), QStringLiteral("annotation"));
    });
    row("folder", [](QWidget* parent) { return new PWSetDirectory(parent, QStringLiteral("folder")); });
}

} // namespace

class tst_widgets : public QObject
{
    Q_OBJECT

private slots:

    void init() { PaletteManager::Instance().setSkin(Skin::Dark); }

    void aValueOfTheProgramIsShownAndNotReported_data() { everyKind(); }

    void aValueOfTheProgramIsShownAndNotReported()
    {
        const Make make = std::get<0>(support::fetched<Make>());
        Window window;
        AbstractParamWidget* param = window.add(make(&window));
        QVERIFY(window.open());
        QSignalSpy reports(param, &AbstractParamWidget::valueChanged);
        for (const char* value : {"Beta", "Gamma", ""}) {
            param->setValue(QString::fromLatin1(value));
            QCOMPARE(param->getValue().toString(), QString::fromLatin1(value));
        }
        param->setFocus();
        QTest::keyClick(param->focusProxy(), Qt::Key_Tab);
        QVERIFY(reports.isEmpty());
        QVERIFY(!param->focusProxy()->accessibleName().isEmpty());
    }

    void aReadOnlyParameterRefusesEditsAndGivesItsText_data() { everyKind(); }

    void aReadOnlyParameterRefusesEditsAndGivesItsText()
    {
        const Make make = std::get<0>(support::fetched<Make>());
        Window window;
        AbstractParamWidget* param = window.add(make(&window));
        param->setValue(QStringLiteral("Beta"));
        param->setReadOnly(true);
        QVERIFY(window.open());
        QSignalSpy reports(param, &AbstractParamWidget::valueChanged);
        QTest::keyClick(&window, Qt::Key_Tab);
        QWidget* field = QApplication::focusWidget();
        QVERIFY(field && param->isAncestorOf(field));
        QTest::keyClicks(field, QStringLiteral("Alpha"));
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClick(field, Qt::Key_Down);
        QCOMPARE(param->getValue().toString(), QStringLiteral("Beta"));
        QVERIFY(reports.isEmpty());
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(field, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("Beta"));
    }

    void aNewSkinRepaintsEverything_data() { everyKind(); }

    void aNewSkinRepaintsEverything()
    {
        const Make make = std::get<0>(support::fetched<Make>());
        const auto picture = [&make](Skin first, Skin last) {
            PaletteManager::Instance().setSkin(first);
            PWExpandableContainer section(nullptr, QStringLiteral("Section"), QStringLiteral("section"));
            AbstractParamWidget* param = make(&section);
            section.addContent(param);
            section.addContent(new StyledButton(QStringLiteral("Set"), &section));
            section.resize(300, 200);
            param->setValue(QStringLiteral("Beta"));
            if (auto* input = qobject_cast<PWTextInput*>(param))
                input->hilightTitle(true);
            section.grab();
            PaletteManager::Instance().setSkin(last);
            return section.grab().toImage();
        };
        QCOMPARE(picture(Skin::Dark, Skin::Light), picture(Skin::Light, Skin::Light));
        QVERIFY(picture(Skin::Dark, Skin::Dark) != picture(Skin::Light, Skin::Light));
    }

    void anAnswerToAReportDisturbsNoTyping()
    {
        Window window;
        PWTextInput* input = window.add(makeInput(&window));
        input->setValue(QStringLiteral("one three"));
        connect(input, &AbstractParamWidget::valueChanged, input, &AbstractParamWidget::setValue);
        QSignalSpy reports(input, &AbstractParamWidget::valueChanged);
        QVERIFY(window.open());
        auto* edit = fieldOf<QLineEdit>(input);
        edit->setFocus();
        edit->setCursorPosition(4);
        QTest::keyClicks(edit, QStringLiteral("two "));
        QCOMPARE(edit->text(), QStringLiteral("one two three"));
        QCOMPARE(edit->cursorPosition(), 8);
        QCOMPARE(reports.size(), 4);
        QCOMPARE(reports.last().first().toString(), edit->text());
        edit->setSelection(0, 3);
        input->setValue(edit->text());
        QCOMPARE(edit->selectedText(), QStringLiteral("one"));
        QTest::keySequence(edit, QKeySequence::Undo);
        QCOMPARE(input->getValue().toString(), QStringLiteral("one three"));
        QCOMPARE(reports.last().first().toString(), QStringLiteral("one three"));
        edit->setCursorPosition(3);
        input->setValue(QStringLiteral("once upon a time"));
        QCOMPARE(edit->cursorPosition(), 3);
    }

    void anAnswerToAReportDisturbsNoTextBox()
    {
        Window window;
        auto* input =
            window.add(new PWMultiLineTextInput(&window, QStringLiteral("Annotation:"), QStringLiteral("annotation")));
        input->setValue(QStringLiteral("first\nthird"));
        connect(input, &AbstractParamWidget::valueChanged, input, &AbstractParamWidget::setValue);
        QSignalSpy reports(input, &AbstractParamWidget::valueChanged);
        window.add(makeInput(&window));
        QVERIFY(window.open());
        auto* box = fieldOf<QPlainTextEdit>(input);
        box->setFocus();
        QTest::keyClick(box, Qt::Key_End);
        QTest::keyClick(box, Qt::Key_Return);
        QTest::keyClicks(box, QStringLiteral("second"));
        QCOMPARE(input->getValue().toString(), QStringLiteral("first\nsecond\nthird"));
        QCOMPARE(reports.size(), 7);
        QCOMPARE(box->textCursor().position(), 12);
        QVERIFY(box->document()->isUndoAvailable());
        QTest::keyClick(box, Qt::Key_Tab);
        QVERIFY(!box->hasFocus());
        QCOMPARE(reports.size(), 7);
    }

    void anEditIsReportedAtItsEnd()
    {
        Window window;
        PWTextInput* input = window.add(makeInput(&window));
        PWTextInput* next = window.add(makeInput(&window));
        input->setReporting(PWTextInput::Reporting::EndOfEdit);
        QSignalSpy reports(input, &AbstractParamWidget::valueChanged);
        QVERIFY(window.open());
        auto* edit = fieldOf<QLineEdit>(input);
        edit->setFocus();
        QTest::keyClicks(edit, QStringLiteral("abc"));
        QVERIFY(reports.isEmpty());
        QTest::keyClick(edit, Qt::Key_Return);
        QCOMPARE(reports.takeFirst().constFirst().toString(), QStringLiteral("abc"));
        QTest::keyClicks(edit, QStringLiteral("d"));
        QTest::keyClick(edit, Qt::Key_Escape);
        QCOMPARE(edit->text(), QStringLiteral("abc"));
        QTest::keyClicks(edit, QStringLiteral("e"));
        QTest::mouseClick(next->focusProxy(), Qt::LeftButton);
        QCOMPARE(reports.size(), 1);
        QCOMPARE(reports.last().first().toString(), QStringLiteral("abce"));
    }

    void aFolderIsReportedWhenItIsCompleteOrDropped()
    {
        Window window;
        auto* folder = window.add(new PWSetDirectory(&window, QStringLiteral("folder")));
        QSignalSpy reports(folder, &AbstractParamWidget::valueChanged);
        QSignalSpy clicks(folder, &PWSetDirectory::setPathButtonClicked);
        QVERIFY(window.open());
        auto* edit = fieldOf<QLineEdit>(folder);
        auto* button = fieldOf<StyledButton>(folder);
        const auto drop = [edit](const QString& path) {
            QMimeData data;
            data.setUrls({QUrl::fromLocalFile(path)});
            QDragEnterEvent enter(QPoint(4, 4), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(edit, &enter);
            QDropEvent event(QPointF(4, 4), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(edit, &event);
        };
        QTest::keyClicks(edit, QStringLiteral("/deliveries"));
        QVERIFY(reports.isEmpty());
        QTest::keyClick(edit, Qt::Key_Return);
        QCOMPARE(reports.size(), 1);
        drop(QDir::tempPath());
        QCOMPARE(folder->getValue().toString(), QDir::tempPath());
        QCOMPARE(reports.size(), 2);
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(clicks.size(), 1);
        folder->setReadOnly(true);
        drop(QDir::rootPath());
        QCOMPARE(folder->getValue().toString(), QDir::tempPath());
        QVERIFY(!button->isVisible());
    }

    void keysChooseEntriesAndPassDividingLines()
    {
        Window window;
        PWDiscrete* choice = window.add(makeDiscrete(&window));
        // As the model answers: with the whole list again.
        connect(choice, &AbstractParamWidget::valueChanged, choice,
                [choice](const QVariant& value) { choice->setItems(choices(), choices().indexOf(value.toString())); });
        QSignalSpy reports(choice, &AbstractParamWidget::valueChanged);
        QVERIFY(window.open());
        QStringList chosen;
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Home, Qt::Key_G}) {
            QTest::keyClick(choice->focusProxy(), key);
            chosen += choice->getValue().toString();
        }
        QCOMPARE(chosen, QStringList({"Beta", "Gamma", "Gamma", "Beta", "Alpha", "Gamma"}));
        QCOMPARE(reports.size(), 5);
    }

    void aClickOnADividingLineChoosesNothing()
    {
        Window window;
        PWDiscrete* choice = window.add(makeDiscrete(&window));
        QSignalSpy reports(choice, &AbstractParamWidget::valueChanged);
        QVERIFY(window.open());
        auto* box = fieldOf<QComboBox>(choice);
        QAbstractItemView* list = box->view();
        for (const int row : {1, 2}) {
            box->showPopup();
            QVERIFY(QTest::qWaitForWindowExposed(list->window()));
            const QPoint at = list->visualRect(list->model()->index(row, 0)).center();
            QTest::mouseMove(list->viewport(), at);
            // Qt takes a release soon after the opening for the end of the click that opened the list.
            QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at,
                              QApplication::doubleClickInterval() + 1);
            QTRY_VERIFY(!list->isVisible());
            QCOMPARE(reports.size(), row - 1);
        }
        QCOMPARE(choice->getValue().toString(), QStringLiteral("Beta"));
    }

    void theWheelChangesAChoiceOnlyWithTheFocus()
    {
        Window window;
        PWTextInput* first = window.add(makeInput(&window));
        PWDiscrete* choice = window.add(makeDiscrete(&window));
        QVERIFY(window.open());
        first->setFocus();
        QWidget* box = choice->focusProxy();
        QVERIFY(!turnWheel(box, -1));
        QCOMPARE(choice->getValue().toString(), QStringLiteral("Alpha"));
        QVERIFY(!box->hasFocus());
        box->setFocus();
        QVERIFY(turnWheel(box, -1));
        QCOMPARE(choice->getValue().toString(), QStringLiteral("Beta"));
    }

    void anUnlistedValueIsShownUntilTheNext()
    {
        Window window;
        PWDiscrete* choice = window.add(makeDiscrete(&window));
        choice->setValue(QStringLiteral("Of old"));
        QCOMPARE(choice->getValue().toString(), QStringLiteral("Of old"));
        QCOMPARE(choice->items(), choices() + QStringList{QStringLiteral("Of old")});
        choice->setValue(QStringLiteral("Gamma"));
        QCOMPARE(choice->items(), choices());
        // An index beside the entries chooses nothing.
        for (const int index : {-1, 1, 3, 5}) {
            choice->setItems(choices(), 2);
            choice->setItems(choices(), index);
            QCOMPARE(choice->getValue().toString(), QString());
        }
    }
};

STRATACUT_TEST_MAIN(tst_widgets)
#include "tst_widgets.moc"
