#include "BarChart.h"

QString bar(const QVector<BarPart>& parts, int most, int cells)
{
    QString text;
    qint64 sum = 0;
    for (const BarPart& part : parts) {
        if (part.count <= 0)
            continue;
        sum += part.count;
        // Each ends where the sum up to it does, so that roundings do not add up.
        const qint64 end = most > 0 ? (2 * sum * cells + most) / (2 * qint64(most)) : 0;
        text += QString(int(qMax(qint64(1), end - text.size())), part.fill);
    }
    return text.left(cells);
}
