#pragma once

#include <QtCore/QSettings>
#include <QtCore/QTextCodec>
#include <QtCore/QVector>

#include <algorithm>

namespace Kv {

/// The settings file, open for one operation. What was set is written when the object is destroyed.
class SettingsFile final : public QSettings
{
public:
    explicit SettingsFile(const QString& path)
        : QSettings(path, QSettings::IniFormat)
    {
        setIniCodec("GB2312"); // what existing files hold
    }

    /// Sets a text that any user may have chosen. What the codec has no bytes for becomes "?".
    void setText(const QString& key, const QString& text) { setValue(key, readableAgain(text)); }

    /// Calls @p read for each entry of an array, in order. Entries that are counted but missing all read the
    /// same, as nothing; of a run of them @p read is called for the first alone, so that a damaged count
    /// costs no time.
    template<class Read>
    void readEntries(const QString& array, Read read);

private:
    QString readableAgain(QString text) const;
};

inline QString SettingsFile::readableAgain(QString text) const
{
    // Some codecs know more than GB2312 and have a backslash as the second byte of some characters there. It
    // would be read as the beginning of an escape, or make one line of two.
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (character.unicode() >= 0x80 && iniCodec()->fromUnicode(&character, 1).contains('\\'))
            text[i] = QLatin1Char('?');
    }
    return text;
}

template<class Read>
void SettingsFile::readEntries(const QString& array, Read read)
{
    const int size = beginReadArray(array);
    const QStringList groups = childGroups();
    QVector<int> present; // counted from 1, as in the file
    present.reserve(groups.size() + 1);
    for (const QString& group : groups) {
        const int entry = group.toInt();
        if (entry >= 1 && entry <= size)
            present.append(entry);
    }
    std::sort(present.begin(), present.end());

    const auto readEntry = [&](int entry) {
        setArrayIndex(entry - 1);
        read();
    };
    int last = 0;
    for (const int entry : qAsConst(present)) {
        if (entry - 1 > last) // not last + 1, as numbers may end there
            readEntry(last + 1);
        readEntry(entry);
        last = entry;
    }
    if (last < size)
        readEntry(last + 1);
    endArray();
}

} // namespace Kv
