#pragma once

#include <QtCore/QString>

/// A document attached to a plan node or to a response. Read from the service, never written to it.
struct KvDocument
{
    QString id;        ///< database id
    QString name;      ///< file name, as the service has it
    int fileSize = 0;  ///< bytes; 0 when the service does not tell
    QString suffix;    ///< file-name extension
    QString createdAt; ///< as received; deliberately not parsed
    QString createdBy; ///< user id
};
