#pragma once

#include <QObject>
#include <QPointer>

#include <vector>

class QWidget;

namespace ViewDeckQt
{

class ParamTitle;

/// Gives all titles of a page one column, so that their fields start at one line whatever they are nested in, and those
/// that mark no letter a mnemonic that nothing else in the window has. Lives as a child of the page, which is found
/// when a title is first shown.
class TitleColumn : public QObject
{
    Q_OBJECT

public:
    /// Adds the title to the column of the page that it is on now, and takes it out of the one it was on before.
    static void join(ParamTitle* title);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit TitleColumn(QWidget* page);
    static TitleColumn* of(QWidget* page);

    QWidget* page() const;
    void align();
    void alignLater();
    void dropTitlesThatLeft();
    void chooseMnemonics();

    std::vector<QPointer<ParamTitle>> m_titles;
    bool m_pending = false;
};

} // namespace ViewDeckQt
