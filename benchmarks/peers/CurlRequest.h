#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// GET requests by libcurl, one after the other over one connection.
class CurlRequest
{
public:
    CurlRequest();
    ~CurlRequest();
    CurlRequest(const CurlRequest&) = delete;
    CurlRequest& operator=(const CurlRequest&) = delete;

    /// The body of the reply from @p url; empty when there is none.
    QByteArray get(const QString& url);

private:
    void* m_handle;
};
