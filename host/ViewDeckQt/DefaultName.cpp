#include "ViewDeckQt/DefaultName.h"

#include <QSet>

void ViewDeckQt::generateDefaultName(QString& name, const QStringList& taken)
{
    const QSet<QString> used(taken.cbegin(), taken.cend());
    QString candidate = name;
    for (int number = 1; used.contains(candidate); ++number)
        candidate = name + QLatin1Char('.') + QString::number(number);
    name = candidate;
}
