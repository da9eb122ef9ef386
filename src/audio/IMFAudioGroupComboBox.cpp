#include "IMFAudioGroupComboBox.h"

#include "IMFAudioGroupSaveAsDialog.h"

#include "NvCore/NvText.h"
#include "ViewDeckQt/ManagedMessageBox.h"

#include <QKeyEvent>
#include <QPointer>
#include <QRegularExpression>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QWheelEvent>

#include <algorithm>

namespace
{
/// Places of the commands, counted from the separator behind the groups.
enum Command { Save = 1, SaveAs, Remove };

constexpr const char* commands[] = {"Save", "Save As...", "Remove Current..."};

constexpr int entryPadding = 8;

const QString changedMark = QStringLiteral(" \u2022");

/// How far a key moves on the closed box; 0 for a key that does not.
int stepOf(int key, int count)
{
    switch (key) {
    case Qt::Key_Up:
        return -1;
    case Qt::Key_Down:
        return 1;
    case Qt::Key_Home:
    case Qt::Key_PageUp:
        return -count;
    case Qt::Key_End:
    case Qt::Key_PageDown:
        return count;
    default:
        return 0;
    }
}
} // namespace

IMFAudioGroupComboBox::IMFAudioGroupComboBox(QWidget* parent) : QComboBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    connect(this, QOverload<int>::of(&QComboBox::activated), this, &IMFAudioGroupComboBox::onActivated);
    load({});
}

void IMFAudioGroupComboBox::setEditor(const AudioGroupEditor* editor)
{
    m_editor = editor;
}

QStringList IMFAudioGroupComboBox::load(const QJsonArray& profiles)
{
    const AudioGroups::Read read = AudioGroups::read(profiles);
    m_groups = {AudioGroup{AudioGroups::defaultName(), {}, false}};
    m_groups += read.groups;
    m_current = 0;
    rebuild();
    return read.remarks;
}

const AudioGroup& IMFAudioGroupComboBox::current() const
{
    return m_groups.at(m_current);
}

QJsonArray IMFAudioGroupComboBox::profiles() const
{
    return AudioGroups::toJson(m_groups.mid(1));
}

QStringList IMFAudioGroupComboBox::names() const
{
    QStringList names;
    for (const AudioGroup& group : m_groups)
        names += group.name;
    return names;
}

AudioGroup IMFAudioGroupComboBox::edited(const QString& name) const
{
    return m_editor ? AudioGroup{name, m_editor->selectedTracks(), m_editor->includesMasterFader()}
                    : AudioGroup{name, {}, false};
}

void IMFAudioGroupComboBox::rebuild()
{
    const QSignalBlocker blocker(this);
    clear();
    const QStringList groups = names();
    for (const QString& name : groups)
        add(name);
    insertSeparator(count());
    for (const char* command : commands)
        add(stx_func(command));
    setCurrentIndex(m_current);
}

void IMFAudioGroupComboBox::add(const QString& entry)
{
    addItem(entry);
    const QSize size(fontMetrics().horizontalAdvance(entry), fontMetrics().height());
    setItemData(count() - 1, size + QSize(entryPadding, entryPadding), Qt::SizeHintRole);
}

void IMFAudioGroupComboBox::onActivated(int position)
{
    const QPointer<IMFAudioGroupComboBox> alive(this);
    switch (position - m_groups.size()) {
    case Save:
        save();
        break;
    case SaveAs:
        saveAs();
        break;
    case Remove:
        removeCurrent();
        break;
    default:
        choose(position);
        break;
    }
    if (alive)
        rebuild();
}

void IMFAudioGroupComboBox::choose(int position)
{
    m_current = position;
    emit profileChosen(current());
}

void IMFAudioGroupComboBox::tell(const char* text)
{
    ViewDeckQt::ManagedMessageBox::messageBox(window(), QMessageBox::Information, {}, stx_func(text), QMessageBox::Ok,
                                              QMessageBox::Ok);
}

void IMFAudioGroupComboBox::save()
{
    if (m_current == 0)
        return tell("Cannot override default group");
    m_groups[m_current] = edited(current().name);
    choose(m_current);
}

void IMFAudioGroupComboBox::removeCurrent()
{
    if (m_current == 0)
        return tell("Cannot remove default group");
    const QString name = current().name;
    m_groups.erase(std::remove_if(m_groups.begin() + 1, m_groups.end(),
                                  [&name](const AudioGroup& group) { return group.name == name; }),
                   m_groups.end());
    choose(0);
}

QString IMFAudioGroupComboBox::suggestedName() const
{
    static const QRegularExpression numbered(QStringLiteral("\\.[1-9]*"));
    const QStringList taken = names();
    QString name = current().name;
    while (taken.contains(name)) {
        qint64 counter = 1;
        if (numbered.match(name).hasMatch()) {
            const QStringList parts = name.split(QLatin1Char('.'));
            counter = qint64(parts.at(1).toInt()) + 1;
            name = parts.first();
        }
        name += QLatin1Char('.') + QString::number(counter);
    }
    return name;
}

void IMFAudioGroupComboBox::saveAs()
{
    AudioGroup group = edited(suggestedName());
    const QPointer<IMFAudioGroupComboBox> alive(this);
    const QPointer<IMFAudioGroupSaveAsDialog> dialog = new IMFAudioGroupSaveAsDialog(window(), group.name, names());
    if (m_editor)
        dialog->reserve(m_editor->otherSources());
    const int answer = dialog->exec();
    if (!alive || !dialog)
        return;
    group.name = dialog->name();
    delete dialog;
    if (answer != QDialog::Accepted)
        return choose(m_current);
    const int place = names().indexOf(group.name);
    if (place < 0)
        m_groups += group;
    else
        m_groups[place] = group;
    choose(place < 0 ? m_groups.size() - 1 : place);
}

void IMFAudioGroupComboBox::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    if (m_editor && m_editor->isChanged()) {
        // A long name gives way to the mark.
        const QRect place = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
        const int room = place.width() - fontMetrics().horizontalAdvance(changedMark);
        option.currentText = fontMetrics().elidedText(option.currentText, Qt::ElideRight, room) + changedMark;
    }
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void IMFAudioGroupComboBox::keyPressEvent(QKeyEvent* event)
{
    const bool opens = event->key() == Qt::Key_Space || event->key() == Qt::Key_F4 ||
                       (event->modifiers() & (Qt::AltModifier | Qt::ControlModifier));
    if (opens)
        return QComboBox::keyPressEvent(event);
    const int step = stepOf(event->key(), m_groups.size());
    if (step == 0)
        return event->ignore();
    const int wanted = qBound(0, m_current + step, m_groups.size() - 1);
    if (wanted == m_current)
        return;
    choose(wanted);
    rebuild();
}

void IMFAudioGroupComboBox::wheelEvent(QWheelEvent* event)
{
    event->ignore();
}
