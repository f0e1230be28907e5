#include "JsonFile.h"

#include "Progress.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QIODevice>

#include <algorithm>
#include <iterator>

namespace {

constexpr int longFile = 4 << 20;       // bytes; takes a person's time
constexpr qint64 largestFile = 1 << 30; // bytes; a byte array holds hardly more

// English unless the host brings a translation.
QString say(const char* text)
{
    return QCoreApplication::translate("JsonFile", text);
}

bool readContent(QIODevice& file, QByteArray& content, QStringList& problems)
{
    Progress progress(QStringLiteral("reading the file"));
    const qint64 size = file.size(); // 0 for a pipe
    QByteArray piece;
    do {
        if (qMax(size, qint64(content.size())) > largestFile) {
            problems.append(
                say(QT_TRANSLATE_NOOP("JsonFile", "the file has more than %1 bytes, too many for one plan"))
                    .arg(largestFile));
            return false;
        }
        piece = file.read(1 << 20);
        content += piece;
        progress.show(content.size(), size);
    } while (!piece.isEmpty());
    if (!file.atEnd()) {
        problems.append(say(QT_TRANSLATE_NOOP("JsonFile", "it could not be read to its end: %1"))
                            .arg(file.errorString()));
        return false;
    }
    return true;
}

// The reader mostly stops behind the character that it could not use.
int faultOffset(const QJsonParseError& error, int size)
{
    switch (error.error) {
    case QJsonParseError::GarbageAtEnd:
    case QJsonParseError::IllegalEscapeSequence:
    case QJsonParseError::IllegalNumber:
    case QJsonParseError::IllegalUTF8String:
    case QJsonParseError::TerminationByNumber:
        return error.offset;
    case QJsonParseError::IllegalValue:
        return error.offset - 1;
    default:
        return error.offset < size ? error.offset - 1 : size; // more was expected there
    }
}

// Line and column, both from 1, of a byte; columns count characters.
QString placeOf(int offset, const QByteArray& file)
{
    const auto begin = file.begin();
    const auto place = begin + qBound(0, offset, file.size());
    const auto lineStart =
        std::find(std::make_reverse_iterator(place), std::make_reverse_iterator(begin), '\n').base();
    const auto beginsCharacter = [](char byte) {
        return (uchar(byte) & 0xc0) != 0x80;
    };
    return say(QT_TRANSLATE_NOOP("JsonFile", "line %1, column %2"))
        .arg(std::count(begin, place, '\n') + 1)
        .arg(std::count_if(lineStart, place, beginsCharacter) + 1);
}

} // namespace

bool JsonFile::read(QIODevice& file, QStringList& problems)
{
    QByteArray content;
    if (!readContent(file, content, problems))
        return false;
    if (content.trimmed().isEmpty()) {
        problems.append(say(QT_TRANSLATE_NOOP("JsonFile", "the file is empty")));
        return false;
    }
    m_isLong = content.size() > longFile;
    Progress progress(QStringLiteral("reading the file"));
    if (m_isLong)
        progress.begin();
    QJsonParseError error;
    m_document = QJsonDocument::fromJson(content, &error);
    if (error.error == QJsonParseError::NoError)
        return true;
    problems.append(say(QT_TRANSLATE_NOOP("JsonFile", "no valid JSON at %1: %2"))
                        .arg(placeOf(faultOffset(error, content.size()), content), error.errorString()));
    return false;
}
