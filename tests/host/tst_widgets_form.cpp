#include "ViewDeckQt/DecorationManager.h"
#include "ViewDeckQt/PWContainer.h"
#include "ViewDeckQt/PWDiscrete.h"
#include "ViewDeckQt/PWExpandableContainer.h"
#include "ViewDeckQt/PWMultiLineTextInput.h"
#include "ViewDeckQt/PWTextInput.h"
#include "ViewDeckQt/PaletteManager.h"
#include "ViewDeckQt/StyledButton.h"
#include "ViewDeckQt/StyledIconButton.h"
#include "host/WidgetWindow.h"
#include "support/TestMain.h"

#include <QComboBox>
#include <QHelpEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyleFactory>
#include <QToolTip>
#include <QVBoxLayout>

using namespace ViewDeckQt;
using namespace widgets;
using Palette::PaletteManager;
using Palette::Skin;

namespace
{
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

class tst_widgets_form : public QObject
{
    Q_OBJECT

private slots:

    void init() { PaletteManager::Instance().setSkin(Skin::Dark); }

    void titlesOfAPageShareOneColumn()
    {
        Window window;
        window.add(makeInput(&window));
        auto* outer = window.add(new PWExpandableContainer(&window, QStringLiteral("Outer"), QStringLiteral("outer")));
        auto* inner = new PWExpandableContainer(outer, QStringLiteral("Inner"), QStringLiteral("inner"));
        inner->addContent(makeInput(inner, QStringLiteral("A title that needs room:")));
        outer->addContent(makeDiscrete(outer));
        outer->addContent(inner);
        inner->collapse();
        QVERIFY(window.open());
        QTRY_VERIFY(linesUp(window, 2));
        const int start = fieldStarts(window).at(0);
        inner->expand();
        QTRY_VERIFY(linesUp(window, 3));
        QCOMPARE(fieldStarts(window).at(0), start);
        window.setLayoutDirection(Qt::RightToLeft);
        window.setFont(QFont(QStringLiteral("DejaVu Sans"), 15));
        QTRY_VERIFY(linesUp(window, 3) && fieldStarts(window).at(0) < window.width() - start);
    }

    void pagesHaveColumnsOfTheirOwn()
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

    void keysExpandAndCollapse()
    {
        struct Step {
            Qt::Key key;
            Qt::LayoutDirection direction;
            bool expanded;
        };

        const Step steps[] = {{Qt::Key_Space, Qt::LeftToRight, false}, {Qt::Key_Return, Qt::LeftToRight, true},
                              {Qt::Key_Left, Qt::LeftToRight, false},  {Qt::Key_Left, Qt::LeftToRight, false},
                              {Qt::Key_Right, Qt::LeftToRight, true},  {Qt::Key_Right, Qt::RightToLeft, false}};
        Window window;
        auto* section =
            window.add(new PWExpandableContainer(&window, QStringLiteral("Video"), QStringLiteral("video")));
        PWTextInput* content = makeInput(section);
        section->addContent(content);
        QVERIFY(window.open());
        auto* header = fieldOf<QAbstractButton>(section);
        QCOMPARE(header->accessibleName(), QStringLiteral("Video"));
        for (const Step& step : steps) {
            window.setLayoutDirection(step.direction);
            QTest::keyClick(header, step.key);
            QCOMPARE(section->isExpanded(), step.expanded);
            QCOMPARE(content->isVisible(), step.expanded);
        }
        QTest::mouseClick(header, Qt::LeftButton);
        QVERIFY(section->isExpanded());
        // The focus stays in sight.
        content->setFocus();
        section->collapse();
        QCOMPARE(QApplication::focusWidget(), header);
    }

    void mnemonicsLeadToTheFieldsAndTitlesWithoutOneGetFreeLetters()
    {
        Window window;
        PWTextInput* title = window.add(makeInput(&window));
        PWTextInput* type = window.add(makeInput(&window, QStringLiteral("Issuer Type:")));
        PWTextInput* issuer = window.add(makeInput(&window, QStringLiteral("&Issuer:")));
        PWDiscrete* choice =
            window.add(new PWDiscrete(&window, QStringLiteral("&Kind:"), QStringLiteral("kind"), choices()));
        choice->setReadOnly(true);
        window.add(new StyledButton(QStringLiteral("&Yes"), &window));
        QVERIFY(window.open());
        const QVector<QPair<Qt::Key, AbstractParamWidget*>> expected{
            {Qt::Key_T, title}, {Qt::Key_I, issuer}, {Qt::Key_S, type}, {Qt::Key_K, choice}};
        for (const auto& step : expected) {
            QTest::keyClick(&window, step.first, Qt::AltModifier);
            QTRY_VERIFY(step.second->focusProxy()->hasFocus());
        }
        QCOMPARE(issuer->focusProxy()->accessibleName(), QStringLiteral("Issuer"));
        QCOMPARE(fieldOf<QLabel>(title)->text(), QStringLiteral("Title:"));
    }

    void aHighlightedTitleDiffersByMoreThanColour()
    {
        Window window;
        PWTextInput* input = window.add(makeInput(&window));
        QVERIFY(window.open());
        auto* title = fieldOf<QLabel>(input);
        const QImage plain = shapeOf(title);
        const QRect place = title->geometry();
        input->hilightTitle(true);
        QVERIFY(shapeOf(title) != plain);
        QCOMPARE(title->geometry(), place);
        QVERIFY(!input->focusProxy()->accessibleDescription().isEmpty());
        input->hilightTitle(false);
        QCOMPARE(shapeOf(title), plain);
        QVERIFY(input->focusProxy()->accessibleDescription().isEmpty());
    }

    void whatIsElidedIsToldByATooltip()
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

    void aTextBoxGrowsWithItsLines()
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

    void aDecoratedWindowDecoratesWhatComesLater()
    {
        Window window;
        auto* before = window.add(new QComboBox(&window));
        auto* own = window.add(new QPushButton(&window));
        const std::unique_ptr<QStyle> ownStyle(QStyleFactory::create(QStringLiteral("Windows")));
        own->setStyle(ownStyle.get());
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

    void anIconButtonFollowsTheSkinAndHasAName()
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
};

STRATACUT_TEST_MAIN(tst_widgets_form)
#include "tst_widgets_form.moc"
