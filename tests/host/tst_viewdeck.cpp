#include "ViewDeckQt/DefaultName.h"
#include "ViewDeckQt/ManagedDialog.h"
#include "ViewDeckQt/ManagedMessageBox.h"
#include "ViewDeckQt/PaletteManager.h"
#include "support/ModalAnswer.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QScreen>
#include <QTranslator>

#include <cmath>

using Palette::PaletteManager;
using Palette::Skin;
using ViewDeckQt::ManagedDialog;
using ViewDeckQt::ManagedWindow;
using Answer = std::function<void(QMessageBox&)>;

namespace
{
std::function<void(QWidget&)> onBox(const Answer& act)
{
    return [act](QWidget& box) { act(*qobject_cast<QMessageBox*>(&box)); };
}

Answer clickOn(QMessageBox::StandardButton button)
{
    return [button](QMessageBox& box) { QTest::mouseClick(box.button(button), Qt::LeftButton); };
}

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
        const Answer escape = [](Box& box) { QTest::keyClick(&box, Qt::Key_Escape); };
        const Answer enter = [](Box& box) { QTest::keyClick(&box, Qt::Key_Return); };
        const Answer close = [](Box& box) { box.close(); };
        row("click Yes", yesNo, Box::No, clickOn(Box::Yes), Box::Yes);
        row("Enter takes the default", yesNo, Box::No, enter, Box::No);
        row("Escape means No", yesNo, Box::Yes, escape, Box::No);
        row("closing means No", yesNo, Box::Yes, close, Box::No);
        row("Cancel before No", yesNo | Box::Cancel, Box::Yes, escape, Box::Cancel);
        row("closing a notice", Box::Ok, Box::Ok, close, Box::Ok);
        row("closing without a way back", Box::Yes | Box::YesToAll, Box::Yes, close, Box::Yes);
    }

    void aMessageBoxAnswersWhatTheUserDid()
    {
        const auto [buttons, byDefault, act, expected] = support::fetched<int, int, Answer, int>();
        const support::WhenOpened box(onBox(act));
        const int answer = ViewDeckQt::ManagedMessageBox::messageBox(
            nullptr, QMessageBox::Question, QStringLiteral("Title"), QStringLiteral("Text"),
            QMessageBox::StandardButtons(buttons), QMessageBox::StandardButton(byDefault));
        QCOMPARE(answer, expected);
        QVERIFY(ManagedWindow::openWindows().isEmpty());
    }

    void aMessageBoxSurvivesTheEndOfItsParent()
    {
        auto* parent = new QWidget;
        QPointer<QWidget> seen;
        const support::WhenOpened opened([&](QWidget& box) {
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
        const support::WhenOpened opened(onBox([&text](QMessageBox& box) {
            QCOMPARE(box.text(), text);
            QCOMPARE(box.windowTitle(), QStringLiteral("Norvel Stratacut"));
            QCOMPARE(box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->textFormat(), Qt::PlainText);
            QCOMPARE(box.icon(), QMessageBox::Warning);
            QCOMPARE(ManagedWindow::activeWindow(), static_cast<QWidget*>(&box));
            box.close();
        }));
        ViewDeckQt::ManagedMessageBox::messageBox(nullptr, QMessageBox::Warning, QStringLiteral("Norvel Stratacut"),
                                                  text, QMessageBox::Ok, QMessageBox::Ok);
    }

    void aMessageThatIsTooLongScrollsOnTheScreen()
    {
        const support::WhenOpened opened(onBox([](QMessageBox& box) {
            QVERIFY(box.screen()->availableGeometry().size().boundedTo(box.size()) == box.size());
            box.close();
        }));
        ViewDeckQt::ManagedMessageBox::messageBox(nullptr, QMessageBox::Warning, QString(),
                                                  QStringLiteral("A file cannot be read.\n").repeated(200),
                                                  QMessageBox::Ok, QMessageBox::Ok);
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
        dialog.show();
        const QColor dark = palette.color(QStringLiteral("PanelBackgroundLighterColor"));
        dialog.skinChanges = 0;
        palette.setSkin(Skin::Light);
        QTRY_VERIFY(dialog.skinChanges > 0);
        QVERIFY(palette.color(QStringLiteral("PanelBackgroundLighterColor")) != dark);
        QCOMPARE(label.palette().color(QPalette::WindowText), palette.color(QStringLiteral("AppFontColor")));
    }

    void textIsReadableInBothSkins()
    {
        struct Pair {
            QPalette::ColorRole text;
            QPalette::ColorRole ground;
        };

        constexpr Pair pairs[] = {
            {QPalette::WindowText, QPalette::Window},      {QPalette::Text, QPalette::Base},
            {QPalette::ButtonText, QPalette::Button},      {QPalette::HighlightedText, QPalette::Highlight},
            {QPalette::PlaceholderText, QPalette::Base},   {QPalette::PlaceholderText, QPalette::Window},
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
        support::expectMessage(QtWarningMsg, "Palette: there is no colour named \"Plaid\"");
        QVERIFY(!PaletteManager::Instance().GetNvRGBColor(QStringLiteral("Plaid")));
        QCOMPARE(PaletteManager::Instance().color(QStringLiteral("Plaid")),
                 QApplication::palette().color(QPalette::WindowText));
    }

    void aDefaultNameTakesTheLowestFreeNumber()
    {
        const QVector<QPair<QStringList, QString>> names{{{"IMP.1"}, "IMP"},
                                                         {{"IMP"}, "IMP.1"},
                                                         {{"IMP.2", "IMP", "IMP.1", "IMP", "IMP.4"}, "IMP.3"},
                                                         {{"imp"}, "IMP"}};
        for (const auto& [taken, expected] : names) {
            QString name = "IMP";
            ViewDeckQt::generateDefaultName(name, taken);
            QCOMPARE(name, expected);
        }
    }
};

STRATACUT_TEST_MAIN(tst_viewdeck)
#include "tst_viewdeck.moc"
