#include "ViewDeckQt/DecorationManager.h"
#include "ViewDeckQt/PWContainer.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWExpandableContainer.h"
#include "ViewDeckQt/PWLabel.h"
#include "ViewDeckQt/PWMultiLineTextInput.h"
#include "ViewDeckQt/PWSetDirectory.h"
#include "ViewDeckQt/PWTextInput.h"
#include "ViewDeckQt/PaletteManager.h"
#include "ViewDeckQt/QFFLineEditQt.h"
#include "ViewDeckQt/StyledButton.h"
#include "ViewDeckQt/StyledIconButton.h"
#include "support/TestMain.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QDropEvent>
#include <QGroupBox>
#include <QHelpEvent>
#include <QLabel>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyleFactory>
#include <QToolTip>
#include <QUrl>
#include <QVBoxLayout>
#include <QWheelEvent>

using namespace ViewDeckQt;
using Palette::PaletteManager;
using Palette::Skin;
using Make = std::function<AbstractParamWidget*(QWidget*)>;
Q_DECLARE_METATYPE(Make)

namespace
{
const QString longText = QStringLiteral("far more words than a window of this width has any room to show in one line");

template <typename Field>
Field* fieldOf(const QWidget* param)
{
    return param->findChild<Field*>();
}

QStringList choices()
{
    return {QStringLiteral("Alpha"), QStringLiteral("----------"), QStringLiteral("Beta"), QStringLiteral("Separator"),
            QStringLiteral("Gamma")};
}

PWDiscrete* makeDiscrete(QWidget* parent)
{
    return new PWDiscrete(parent, QStringLiteral("Kind:"), QStringLiteral("kind"), choices());
}

PWTextInput* makeInput(QWidget* parent, const QString& label = QStringLiteral("Title:"))
{
    return new PWTextInput(parent, label, QStringLiteral("title"));
}

/// A window that is shown and active, with a column for what is tested.
struct Window : QWidget {
    Window()
    {
        new QVBoxLayout(this);
        resize(360, 300);
    }

    template <typename Widget>
    Widget* add(Widget* widget)
    {
        layout()->addWidget(widget);
        return widget;
    }

    bool open()
    {
        show();
        activateWindow();
        return QTest::qWaitForWindowActive(this);
    }
};

void everyKind()
{
    QTest::addColumn<Make>("make");
    QTest::newRow("label") << Make([](QWidget* parent) {
        return new PWLabel(parent, QStringLiteral("Creator:"), QStringLiteral("creator"), QString());
    });
    QTest::newRow("choice") << Make(makeDiscrete);
    QTest::newRow("text") << Make([](QWidget* parent) { return makeInput(parent); });
    QTest::newRow("text box") << Make([](QWidget* parent) {
        return new PWMultiLineTextInput(parent, QStringLiteral("Annotation:"), QStringLiteral("annotation"));
    });
    QTest::newRow("folder") << Make(
        [](QWidget* parent) { return new PWSetDirectory(parent, QStringLiteral("folder")); });
}

bool turnWheel(QWidget* over, int steps)
{
    const QPointF at = over->rect().center();
    QWheelEvent event(at, over->mapToGlobal(at.toPoint()), {}, {0, 120 * steps}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(over, &event);
    return event.isAccepted();
}

QString toolTipOf(QWidget* widget)
{
    QToolTip::hideText();
    const QPoint at = widget->rect().center();
    QHelpEvent event(QEvent::ToolTip, at, widget->mapToGlobal(at));
    QCoreApplication::sendEvent(widget, &event);
    return event.isAccepted() ? QToolTip::text() : QString();
}

/// What of the widget is drawn, whatever its colour.
QImage shapeOf(QWidget* widget)
{
    const QImage image = widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
    return image.createMaskFromColor(image.pixel(0, 0));
}

/// Where fields start in the window, seen from the side where lines start.
QVector<int> fieldStarts(QWidget& window)
{
    QVector<int> starts;
    const QList<AbstractParamWidget*> params = window.findChildren<AbstractParamWidget*>();
    for (AbstractParamWidget* param : params) {
        const QWidget* field = param->focusProxy();
        if (!field || !field->isVisible())
            continue;
        const QRect place(field->mapTo(&window, QPoint()), field->size());
        starts.append(window.isRightToLeft() ? place.right() : place.left());
    }
    return starts;
}

bool linesUp(QWidget& window, int count)
{
    const QVector<int> starts = fieldStarts(window);
    return starts.size() == count && starts.count(starts.first()) == count;
}
} // namespace

class tst_widgets : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aValueOfTheProgramIsShownAndNotReported_data() { everyKind(); }

    void aValueOfTheProgramIsShownAndNotReported();

    void aReadOnlyParameterRefusesEditsAndGivesItsText_data() { everyKind(); }

    void aReadOnlyParameterRefusesEditsAndGivesItsText();

    void aNewSkinRepaintsEverything_data() { everyKind(); }

    void aNewSkinRepaintsEverything();
    void anAnswerToAReportDisturbsNoTyping();
    void anAnswerToAReportDisturbsNoTextBox();
    void anEditIsReportedAtItsEnd();
    void aPathIsReportedWhenItIsComplete();
    void aDroppedFolderIsReported();
    void keysChooseEntriesAndPassDividingLines();
    void aClickOnADividingLineChoosesNothing();
    void theWheelChangesAChoiceOnlyWithTheFocus();
    void anUnlistedValueIsShownUntilTheNext();
    void anIndexBesideTheEntriesChoosesNothing();
    void titlesOfAPageShareOneColumn();
    void pagesHaveColumnsOfTheirOwn();
    void keysExpandAndCollapse_data();
    void keysExpandAndCollapse();
    void collapsingKeepsTheFocusInSight();
    void tabVisitsFieldsInTheOrderOfTheirAdding();
    void aMnemonicLeadsToTheField();
    void aHighlightedTitleDiffersByMoreThanColour();
    void whatIsElidedIsToldByATooltip();
    void aTextBoxGrowsWithItsLines();
    void aDecoratedWindowDecoratesWhatComesLater();
    void anIconButtonFollowsTheSkinAndHasAName();
};

void tst_widgets::init()
{
    PaletteManager::Instance().setSkin(Skin::Dark);
}

void tst_widgets::aValueOfTheProgramIsShownAndNotReported()
{
    QFETCH(const Make, make);
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

void tst_widgets::aReadOnlyParameterRefusesEditsAndGivesItsText()
{
    QFETCH(const Make, make);
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

void tst_widgets::aNewSkinRepaintsEverything()
{
    QFETCH(const Make, make);
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

void tst_widgets::anAnswerToAReportDisturbsNoTyping()
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

void tst_widgets::anAnswerToAReportDisturbsNoTextBox()
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

void tst_widgets::anEditIsReportedAtItsEnd()
{
    Window window;
    PWTextInput* input = window.add(makeInput(&window));
    PWTextInput* next = window.add(makeInput(&window));
    input->setReporting(PWTextInput::Reporting::EndOfEdit);
    input->setValue(QStringLiteral("a"));
    QSignalSpy reports(input, &AbstractParamWidget::valueChanged);
    QVERIFY(window.open());
    auto* edit = fieldOf<QLineEdit>(input);
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_End);
    QTest::keyClicks(edit, QStringLiteral("bc"));
    QVERIFY(reports.isEmpty());
    QTest::keyClick(edit, Qt::Key_Return);
    QCOMPARE(reports.size(), 1);
    QCOMPARE(reports.last().first().toString(), QStringLiteral("abc"));
    QTest::keyClicks(edit, QStringLiteral("d"));
    QTest::keyClick(edit, Qt::Key_Escape);
    QCOMPARE(edit->text(), QStringLiteral("abc"));
    QTest::keyClicks(edit, QStringLiteral("e"));
    QTest::mouseClick(next->focusProxy(), Qt::LeftButton);
    QCOMPARE(reports.size(), 2);
    QCOMPARE(reports.last().first().toString(), QStringLiteral("abce"));
}

void tst_widgets::aPathIsReportedWhenItIsComplete()
{
    Window window;
    auto* folder = window.add(new PWSetDirectory(&window, QStringLiteral("folder")));
    QSignalSpy reports(folder, &AbstractParamWidget::valueChanged);
    QSignalSpy clicks(folder, &PWSetDirectory::setPathButtonClicked);
    QVERIFY(window.open());
    auto* edit = fieldOf<QLineEdit>(folder);
    auto* button = fieldOf<StyledButton>(folder);
    QTest::keyClicks(edit, QStringLiteral("/deliveries"));
    QVERIFY(reports.isEmpty());
    QTest::keyClick(edit, Qt::Key_Return);
    QCOMPARE(reports.size(), 1);
    QTest::mouseClick(button, Qt::LeftButton);
    QTest::keyClick(button, Qt::Key_Space);
    QCOMPARE(clicks.size(), 2);
    folder->setReadOnly(true);
    QVERIFY(!button->isVisible());
    QCOMPARE(reports.size(), 1);
}

void tst_widgets::aDroppedFolderIsReported()
{
    Window window;
    auto* folder = window.add(new PWSetDirectory(&window, QStringLiteral("folder")));
    QSignalSpy reports(folder, &AbstractParamWidget::valueChanged);
    QVERIFY(window.open());
    const auto drop = [folder](const QUrl& url) {
        QMimeData data;
        data.setUrls({url});
        QDragEnterEvent enter(QPoint(4, 4), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(fieldOf<QLineEdit>(folder), &enter);
        QDropEvent event(QPointF(4, 4), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(fieldOf<QLineEdit>(folder), &event);
    };
    drop(QUrl::fromLocalFile(QDir::tempPath()));
    QCOMPARE(folder->getValue().toString(), QDir::tempPath());
    QCOMPARE(reports.size(), 1);
    folder->setReadOnly(true);
    drop(QUrl::fromLocalFile(QDir::rootPath()));
    QCOMPARE(folder->getValue().toString(), QDir::tempPath());
}

void tst_widgets::keysChooseEntriesAndPassDividingLines()
{
    Window window;
    PWDiscrete* choice = window.add(makeDiscrete(&window));
    // As the model answers: with the whole list again.
    connect(choice, &AbstractParamWidget::valueChanged, choice,
            [choice](const QVariant& value) { choice->setItems(choices(), choices().indexOf(value.toString())); });
    QSignalSpy reports(choice, &AbstractParamWidget::valueChanged);
    QVERIFY(window.open());
    QWidget* box = choice->focusProxy();
    QCOMPARE(choice->getValue().toString(), QStringLiteral("Alpha"));
    const QVector<QPair<Qt::Key, QString>> steps{
        {Qt::Key_Down, QStringLiteral("Beta")}, {Qt::Key_Down, QStringLiteral("Gamma")},
        {Qt::Key_Up, QStringLiteral("Beta")},   {Qt::Key_Home, QStringLiteral("Alpha")},
        {Qt::Key_G, QStringLiteral("Gamma")},
    };
    for (const auto& step : steps) {
        QTest::keyClick(box, step.first);
        QCOMPARE(choice->getValue().toString(), step.second);
        QCOMPARE(reports.takeFirst().first().toString(), step.second);
        QVERIFY(reports.isEmpty());
    }
    QTest::keyClick(box, Qt::Key_Down);
    QVERIFY(reports.isEmpty());
}

void tst_widgets::aClickOnADividingLineChoosesNothing()
{
    // Qt closes the list after each click.
    for (int opening = 0; opening < 2; ++opening)
        support::expectMessage(QtWarningMsg, QStringLiteral("does not support grabbing the keyboard"));
    Window window;
    PWDiscrete* choice = window.add(makeDiscrete(&window));
    QSignalSpy reports(choice, &AbstractParamWidget::valueChanged);
    QVERIFY(window.open());
    auto* box = fieldOf<QComboBox>(choice);
    QTest::mouseClick(box, Qt::LeftButton);
    QAbstractItemView* list = box->view();
    QVERIFY(QTest::qWaitForWindowExposed(list->window()));
    const auto clickOn = [list](int row) {
        const QPoint at = list->visualRect(list->model()->index(row, 0)).center();
        QTest::mouseMove(list->viewport(), at);
        // Qt takes a release soon after the opening for the end of the click that opened the list.
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at,
                          QApplication::doubleClickInterval() + 1);
    };
    clickOn(1);
    QVERIFY(reports.isEmpty());
    QCOMPARE(choice->getValue().toString(), QStringLiteral("Alpha"));
    QTRY_VERIFY(!list->isVisible());
    box->showPopup();
    clickOn(2);
    QTRY_COMPARE(reports.size(), 1);
    QCOMPARE(choice->getValue().toString(), QStringLiteral("Beta"));
}

void tst_widgets::theWheelChangesAChoiceOnlyWithTheFocus()
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

void tst_widgets::anUnlistedValueIsShownUntilTheNext()
{
    Window window;
    PWDiscrete* choice = window.add(makeDiscrete(&window));
    choice->setValue(QStringLiteral("Of old"));
    QCOMPARE(choice->getValue().toString(), QStringLiteral("Of old"));
    QCOMPARE(choice->items(), choices() + QStringList{QStringLiteral("Of old")});
    choice->setValue(QStringLiteral("Older"));
    choice->setValue(QStringLiteral("Gamma"));
    QCOMPARE(choice->items(), choices());
    QCOMPARE(choice->currentIndex(), 4);
}

void tst_widgets::anIndexBesideTheEntriesChoosesNothing()
{
    Window window;
    PWDiscrete* choice = window.add(makeDiscrete(&window));
    for (const int index : {-1, 1, 3, 5}) {
        choice->setItems(choices(), 2);
        QCOMPARE(choice->getValue().toString(), QStringLiteral("Beta"));
        choice->setItems(choices(), index);
        QCOMPARE(choice->currentIndex(), -1);
        QCOMPARE(choice->getValue().toString(), QString());
    }
}

void tst_widgets::titlesOfAPageShareOneColumn()
{
    Window window;
    auto* box = window.add(new QGroupBox(&window));
    auto* boxed = new QVBoxLayout(box);
    boxed->addWidget(makeInput(box));
    auto* outer = window.add(new PWExpandableContainer(&window, QStringLiteral("Outer"), QStringLiteral("outer")));
    auto* inner = new PWExpandableContainer(outer, QStringLiteral("Inner"), QStringLiteral("inner"));
    inner->addContent(makeInput(inner, QStringLiteral("A title that needs room:")));
    outer->addContent(makeDiscrete(outer));
    outer->addContent(inner);
    inner->collapse();
    QVERIFY(window.open());
    QTRY_VERIFY(linesUp(window, 3) || linesUp(window, 2));
    const int start = fieldStarts(window).first();
    inner->expand();
    QTRY_VERIFY(linesUp(window, 3));
    QCOMPARE(fieldStarts(window).first(), start);
    window.setLayoutDirection(Qt::RightToLeft);
    QTRY_VERIFY(linesUp(window, 3));
    window.setFont(QFont(QStringLiteral("DejaVu Sans"), 15));
    QTRY_VERIFY(linesUp(window, 3) && fieldStarts(window).first() < window.width() - start);
}

void tst_widgets::pagesHaveColumnsOfTheirOwn()
{
    Window window;
    auto* area = window.add(new QScrollArea(&window));
    auto* page = new PWContainer(area, QStringLiteral("root"));
    PWTextInput* wide = makeInput(page, QStringLiteral("A title that needs room:"));
    page->addContent(wide);
    area->setWidget(page);
    area->setWidgetResizable(true);
    PWTextInput* narrow = window.add(makeInput(&window, QStringLiteral("A:")));
    QVERIFY(window.open());
    QTRY_VERIFY(wide->focusProxy()->x() > narrow->focusProxy()->x() + 60);
}

void tst_widgets::keysExpandAndCollapse_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("direction");
    QTest::addColumn<QVector<bool>>("expanded");
    const int leftToRight = Qt::LeftToRight;
    QTest::newRow("Space") << int(Qt::Key_Space) << leftToRight << QVector<bool>{false, true};
    QTest::newRow("Enter") << int(Qt::Key_Return) << leftToRight << QVector<bool>{false, true};
    QTest::newRow("Left") << int(Qt::Key_Left) << leftToRight << QVector<bool>{false, false};
    QTest::newRow("Right") << int(Qt::Key_Right) << leftToRight << QVector<bool>{true, true};
    QTest::newRow("Right in a mirrored layout")
        << int(Qt::Key_Right) << int(Qt::RightToLeft) << QVector<bool>{false, false};
}

void tst_widgets::keysExpandAndCollapse()
{
    QFETCH(const int, key);
    QFETCH(const int, direction);
    QFETCH(const QVector<bool>, expanded);
    Window window;
    window.setLayoutDirection(Qt::LayoutDirection(direction));
    auto* section = window.add(new PWExpandableContainer(&window, QStringLiteral("Video"), QStringLiteral("video")));
    PWTextInput* content = makeInput(section);
    section->addContent(content);
    QVERIFY(window.open());
    auto* header = fieldOf<QAbstractButton>(section);
    QCOMPARE(header->accessibleName(), QStringLiteral("Video"));
    for (const bool state : expanded) {
        QTest::keyClick(header, Qt::Key(key));
        QCOMPARE(section->isExpanded(), state);
        QCOMPARE(content->isVisible(), state);
    }
    QTest::mouseClick(header, Qt::LeftButton);
    QCOMPARE(section->isExpanded(), !expanded.last());
}

void tst_widgets::collapsingKeepsTheFocusInSight()
{
    Window window;
    auto* section = window.add(new PWExpandableContainer(&window, QStringLiteral("Video"), QStringLiteral("video")));
    PWTextInput* content = makeInput(section);
    section->addContent(content);
    QVERIFY(window.open());
    content->setFocus();
    section->collapse();
    QCOMPARE(QApplication::focusWidget(), fieldOf<QAbstractButton>(section));
}

void tst_widgets::tabVisitsFieldsInTheOrderOfTheirAdding()
{
    Window window;
    auto* root = window.add(new PWContainer(&window, QStringLiteral("root")));
    // Made in another order than they are added in.
    PWTextInput* second = makeInput(root);
    PWDiscrete* first = makeDiscrete(root);
    auto* section = new PWExpandableContainer(root, QStringLiteral("Section"), QStringLiteral("section"));
    PWTextInput* third = makeInput(section);
    section->addContent(third);
    root->addContent(first);
    root->addContent(second);
    root->addContent(section);
    QVERIFY(window.open());
    const QVector<QWidget*> order{first->focusProxy(), second->focusProxy(), fieldOf<QAbstractButton>(section),
                                  third->focusProxy()};
    first->setFocus();
    for (QWidget* expected : order) {
        QCOMPARE(QApplication::focusWidget(), expected);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    third->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    QCOMPARE(QApplication::focusWidget(), order[2]);
}

void tst_widgets::aMnemonicLeadsToTheField()
{
    Window window;
    window.add(makeInput(&window));
    PWTextInput* input = window.add(makeInput(&window, QStringLiteral("&Issuer:")));
    PWDiscrete* choice =
        window.add(new PWDiscrete(&window, QStringLiteral("&Kind:"), QStringLiteral("kind"), choices()));
    choice->setReadOnly(true);
    QVERIFY(window.open());
    QTest::keyClick(&window, Qt::Key_I, Qt::AltModifier);
    QVERIFY(input->focusProxy()->hasFocus());
    QCOMPARE(input->focusProxy()->accessibleName(), QStringLiteral("Issuer"));
    QTest::keyClick(&window, Qt::Key_K, Qt::AltModifier);
    QVERIFY(choice->focusProxy()->hasFocus());
}

void tst_widgets::aHighlightedTitleDiffersByMoreThanColour()
{
    Window window;
    PWTextInput* input = window.add(makeInput(&window));
    auto* folder = window.add(new PWSetDirectory(&window, QStringLiteral("folder")));
    QVERIFY(window.open());
    const auto check = [&window](auto* param) {
        QTRY_VERIFY(linesUp(window, 2));
        auto* title = fieldOf<QLabel>(param);
        const QImage plain = shapeOf(title);
        const QRect place = title->geometry();
        param->hilightTitle(true);
        QVERIFY(param->isTitleHilighted());
        QVERIFY(shapeOf(title) != plain);
        QCOMPARE(title->geometry(), place);
        QVERIFY(!param->focusProxy()->accessibleDescription().isEmpty());
        param->hilightTitle(false);
        QCOMPARE(shapeOf(title), plain);
        QVERIFY(param->focusProxy()->accessibleDescription().isEmpty());
    };
    check(input);
    check(folder);
}

void tst_widgets::whatIsElidedIsToldByATooltip()
{
    Window window;
    PWTextInput* input = window.add(makeInput(&window));
    PWDiscrete* choice = window.add(makeDiscrete(&window));
    PWTextInput* titled = window.add(makeInput(&window, longText));
    QVERIFY(window.open());
    input->setValue(QStringLiteral("short"));
    QCOMPARE(toolTipOf(input->focusProxy()), QString());
    QCOMPARE(toolTipOf(choice->focusProxy()), QString());
    for (AbstractParamWidget* param :
         {static_cast<AbstractParamWidget*>(input), static_cast<AbstractParamWidget*>(choice)}) {
        param->setValue(longText);
        QCOMPARE(toolTipOf(param->focusProxy()), longText);
    }
    QTRY_COMPARE(toolTipOf(fieldOf<QLabel>(titled)), longText);
    QToolTip::hideText();
}

void tst_widgets::aTextBoxGrowsWithItsLines()
{
    Window window;
    auto* input =
        window.add(new PWMultiLineTextInput(&window, QStringLiteral("Annotation:"), QStringLiteral("annotation")));
    QVERIFY(window.open());
    auto* box = fieldOf<QPlainTextEdit>(input);
    const int least = box->height();
    input->setValue(longText.repeated(2));
    QTRY_VERIFY(box->height() > least);
    QTRY_COMPARE(box->verticalScrollBar()->maximum(), 0);
    const int some = box->height();
    input->setValue(longText.repeated(40));
    QTRY_VERIFY(box->height() > some && box->verticalScrollBar()->maximum() > 0);
    QVERIFY(!turnWheel(box->viewport(), -1) || box->hasFocus());
}

void tst_widgets::aDecoratedWindowDecoratesWhatComesLater()
{
    Window window;
    auto* before = window.add(new QComboBox(&window));
    auto* own = window.add(new QPushButton(&window));
    const std::unique_ptr<QStyle> ownStyle(QStyleFactory::create(QStringLiteral("Windows")));
    own->setStyle(ownStyle.get());
    DecorationManager::decorate(&window);
    DecorationManager::decorate(&window);
    QVERIFY(window.open());
    auto* pane = window.add(new QWidget(&window));
    auto* later = new QPushButton(QStringLiteral("Later"), pane);
    pane->show();
    QCoreApplication::processEvents();
    QCOMPARE(before->style(), DecorationManager::style());
    QCOMPARE(later->style(), DecorationManager::style());
    QCOMPARE(own->style(), ownStyle.get());
}

void tst_widgets::anIconButtonFollowsTheSkinAndHasAName()
{
    Window window;
    auto* button = window.add(new StyledIconButton(&window));
    button->setImage(QStringLiteral("iconsV2/General"), QStringLiteral("plus_icon.png"));
    button->setToolTip(QStringLiteral("Add"));
    QVERIFY(window.open());
    QSignalSpy clicks(button, &QAbstractButton::clicked);
    QTest::keyClick(button, Qt::Key_Space);
    QCOMPARE(clicks.size(), 1);
    QCOMPARE(button->accessibleName(), QStringLiteral("Add"));
    const QImage dark = button->grab().toImage();
    PaletteManager::Instance().setSkin(Skin::Light);
    const QImage light = button->grab().toImage();
    QVERIFY(dark.pixelColor(dark.rect().center()) != light.pixelColor(light.rect().center()));
}

STRATACUT_TEST_MAIN(tst_widgets)
#include "tst_widgets.moc"
