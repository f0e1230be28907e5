#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

class QNetworkAccessManager;

/// What a path below the service's base address sends to a bare network access manager and event loop, as
/// bytes; empty when the request failed.
QByteArray bareGet(QNetworkAccessManager& manager, const QString& path);
