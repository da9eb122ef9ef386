#include "ViewDeckQt/DefaultName.h"
#include "ViewDeckQt/ManagedDialog.h"
#include "ViewDeckQt/ManagedMessageBox.h"
#include "ViewDeckQt/PaletteManager.h"
#include "support/Rows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QTranslator>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

using Palette::PaletteManager;
using Palette::Skin;
using ViewDeckQt::ManagedDialog;
using ViewDeckQt::ManagedWindow;
using Answer = std::function<void(QMessageBox&)>;

namespace
{
/// Acts on the next message box as soon as it is on the screen.
void whenABoxOpens(const Answer& act)
{
    auto* timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        timer->stop();
        timer->deleteLater();
        act(*box);
    });
    timer->start(1);
}

Answer clickOn(QMessageBox::StandardButton button)
{
    return [button](QMessageBox& box) { QTest::mouseClick(box.button(button), Qt::LeftButton); };
}

void pressEscape(QMessageBox& box)
{
    QTest::keyClick(&box, Qt::Key_Escape);
}

void pressEnter(QMessageBox& box)
{
    QTest::keyClick(&box, Qt::Key_Return);
}

void closeWindow(QMessageBox& box)
{
    box.close();
}

class PaletteChanges : public QObject
{
public:
    int count = 0;

    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::PaletteChange;
        return false;
    }
};

class SkinDialog : public ManagedDialog<QDialog>
{
public:
    int skinChanges = 0;

protected:
    void onSkinChanged() override { ++skinChanges; }
};

class ReversingTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }

    QString translate(const char*, const char* text, const char*, int) const override
    {
        QString reversed = QString::fromUtf8(text);
        std::reverse(reversed.begin(), reversed.end());
        return reversed;
    }
};
} // namespace

class tst_viewdeck : public QObject
{
    Q_OBJECT

private slots:

    void aMessageBoxAnswersWhatTheUserDid_data()
    {
        const support::Rows<int, int, Answer, int> row;
        using Box = QMessageBox;
        const int yesNo = Box::Yes | Box::No;
        row("click Yes", yesNo, int(Box::No), clickOn(Box::Yes), int(Box::Yes));
        row("click No", yesNo, int(Box::Yes), clickOn(Box::No), int(Box::No));
        row("Enter takes the default", yesNo, int(Box::No), Answer(pressEnter), int(Box::No));
        row("Escape means No", yesNo, int(Box::Yes), Answer(pressEscape), int(Box::No));
        row("closing means No", yesNo, int(Box::Yes), Answer(closeWindow), int(Box::No));
        row("Cancel before No", int(yesNo | Box::Cancel), int(Box::Yes), Answer(pressEscape), int(Box::Cancel));
        row("closing a notice", int(Box::Ok), int(Box::Ok), Answer(closeWindow), int(Box::Ok));
        row("closing without a way back", int(Box::Yes | Box::YesToAll), int(Box::Yes), Answer(closeWindow),
            int(Box::Yes));
        row("click Ignore", int(yesNo | Box::Ignore), int(Box::No), clickOn(Box::Ignore), int(Box::Ignore));
    }

    void aMessageBoxAnswersWhatTheUserDid()
    {
        const auto [buttons, byDefault, act, expected] = support::fetched<int, int, Answer, int>();
        whenABoxOpens(act);
        const int answer = ViewDeckQt::ManagedMessageBox::messageBox(
            nullptr, QMessageBox::Question, QStringLiteral("Title"), QStringLiteral("Text"),
            QMessageBox::StandardButtons(buttons), QMessageBox::StandardButton(byDefault));
        QCOMPARE(answer, expected);
        QVERIFY(ManagedWindow::openWindows().isEmpty());
    }

    void aMessageBoxSurvivesTheEndOfItsParent()
    {
        auto* parent = new QWidget;
        QPointer<QMessageBox> seen;
        whenABoxOpens([&](QMessageBox& box) {
            seen = &box;
            delete parent;
        });
        const auto answer = ViewDeckQt::ManagedMessageBox::messageBox(
            parent, QMessageBox::Question, QString(), QString(), QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
        QCOMPARE(answer, QMessageBox::No);
        QVERIFY(seen.isNull());
    }

    void aMessageBoxShowsItsTextVerbatimAndIsRegistered()
    {
        const QString text = QStringLiteral("Can't remove <b>A & B</b>");
        QString shown;
        QString title;
        Qt::TextFormat format = Qt::RichText;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        bool registered = false;
        whenABoxOpens([&](QMessageBox& box) {
            shown = box.text();
            title = box.windowTitle();
            format = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->textFormat();
            icon = box.icon();
            registered = ManagedWindow::activeWindow() == &box;
            box.close();
        });
        ViewDeckQt::ManagedMessageBox::messageBox(nullptr, QMessageBox::Warning, QStringLiteral("Norvel Stratacut"),
                                                  text, QMessageBox::Ok, QMessageBox::Ok);
        QCOMPARE(shown, text);
        QCOMPARE(title, QStringLiteral("Norvel Stratacut"));
        QCOMPARE(format, Qt::PlainText);
        QCOMPARE(icon, QMessageBox::Warning);
        QVERIFY(registered);
    }

    void theWindowUsedLastComesFirstUntilItIsHidden()
    {
        QWidget owner;
        ManagedDialog<QDialog> first(&owner);
        QCOMPARE(first.parentWidget(), &owner);
        auto second = std::make_unique<ManagedDialog<QMessageBox>>();
        first.show();
        second->show();
        QVERIFY(QTest::qWaitForWindowActive(second.get()));
        QCOMPARE(ManagedWindow::openWindows(), (QList<QWidget*>{second.get(), &first}));
        first.activateWindow();
        QTRY_COMPARE(ManagedWindow::activeWindow(), static_cast<QWidget*>(&first));
        second.reset();
        QCOMPARE(ManagedWindow::openWindows(), QList<QWidget*>{&first});
        first.hide();
        QVERIFY(!ManagedWindow::activeWindow());
    }

    void aManagedTitleFollowsTheLanguage()
    {
        ManagedDialog<QDialog> dialog;
        dialog.setManagedTitle(stx_func("New IMF"));
        QCOMPARE(dialog.windowTitle(), QStringLiteral("New IMF"));
        ReversingTranslator translator;
        QCoreApplication::installTranslator(&translator);
        QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("FMI weN"));
        QCoreApplication::removeTranslator(&translator);
        QTRY_COMPARE(dialog.windowTitle(), QStringLiteral("New IMF"));
    }

    void aNewSkinReachesEveryWidget()
    {
        PaletteManager& palette = PaletteManager::Instance();
        palette.setSkin(Skin::Dark);
        SkinDialog dialog;
        QLabel label(QStringLiteral("text"), &dialog);
        PaletteChanges changes;
        label.installEventFilter(&changes);
        dialog.show();
        const QColor dark = palette.color(QStringLiteral("PanelBackgroundLighterColor"));
        dialog.skinChanges = changes.count = 0;
        palette.setSkin(Skin::Light);
        QTRY_VERIFY(changes.count > 0);
        QTRY_VERIFY(dialog.skinChanges > 0);
        QCOMPARE(palette.skin(), Skin::Light);
        QVERIFY(palette.color(QStringLiteral("PanelBackgroundLighterColor")) != dark);
        QCOMPARE(label.palette().color(QPalette::WindowText), palette.color(QStringLiteral("AppFontColor")));
    }

    void textIsReadableInBothSkins()
    {
        struct Pair {
            QPalette::ColorRole text;
            QPalette::ColorRole ground;
        };

        constexpr Pair pairs[] = {{QPalette::WindowText, QPalette::Window},
                                  {QPalette::Text, QPalette::Base},
                                  {QPalette::ButtonText, QPalette::Button},
                                  {QPalette::HighlightedText, QPalette::Highlight},
                                  {QPalette::ToolTipText, QPalette::ToolTipBase}};
        // Relative luminance and contrast as the Web Content Accessibility Guidelines 2.1 define them; 4.5 is level AA.
        const auto luminance = [](const QColor& color) {
            const auto linear = [](double c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
            return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
        };
        for (const Skin skin : {Skin::Dark, Skin::Light}) {
            const QPalette palette = PaletteManager::paletteOf(skin);
            for (const Pair& pair : pairs) {
                const double text = luminance(palette.color(pair.text));
                const double ground = luminance(palette.color(pair.ground));
                const double contrast = (qMax(text, ground) + 0.05) / (qMin(text, ground) + 0.05);
                QVERIFY2(contrast >= 4.5, qPrintable(QStringLiteral("role %1: %2").arg(pair.text).arg(contrast)));
            }
        }
    }

    void anUnknownColourIsReportedOnce()
    {
        QTest::ignoreMessage(QtWarningMsg, "Palette: there is no colour named \"Plaid\"");
        QVERIFY(!PaletteManager::Instance().GetNvRGBColor(QStringLiteral("Plaid")));
        static int warnings = 0;
        const QtMessageHandler former =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
        const QColor fallback = PaletteManager::Instance().color(QStringLiteral("Plaid"));
        qInstallMessageHandler(former);
        QCOMPARE(warnings, 0);
        QCOMPARE(fallback, QApplication::palette().color(QPalette::WindowText));
    }

    void aDefaultNameTakesTheLowestFreeNumber_data()
    {
        const support::Rows<QStringList, QString> row;
        const QString name = QStringLiteral("Untitled IMP");
        row("free", QStringList{QStringLiteral("Untitled IMP.1")}, name);
        row("taken", QStringList{name}, name + QStringLiteral(".1"));
        row("a gap",
            QStringList{name + QStringLiteral(".2"), name, name + QStringLiteral(".1"), name,
                        name + QStringLiteral(".4")},
            name + QStringLiteral(".3"));
        row("other case", QStringList{name.toUpper()}, name);
    }

    void aDefaultNameTakesTheLowestFreeNumber()
    {
        const auto [taken, expected] = support::fetched<QStringList, QString>();
        QString name = QStringLiteral("Untitled IMP");
        ViewDeckQt::generateDefaultName(name, taken);
        QCOMPARE(name, expected);
    }
};

QTEST_MAIN(tst_viewdeck)
#include "tst_viewdeck.moc"
