#include "CurlRequest.h"

#include <curl/curl.h>

namespace {

std::size_t append(char* data, std::size_t size, std::size_t count, void* body)
{
    static_cast<QByteArray*>(body)->append(data, int(size * count));
    return size * count;
}

} // namespace

CurlRequest::CurlRequest()
    : m_handle(curl_easy_init())
{
    curl_easy_setopt(m_handle, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(m_handle, CURLOPT_FAILONERROR, 1L);
}

CurlRequest::~CurlRequest()
{
    curl_easy_cleanup(m_handle);
}

QByteArray CurlRequest::get(const QString& url)
{
    QByteArray body;
    const QByteArray encoded = url.toUtf8();
    curl_easy_setopt(m_handle, CURLOPT_URL, encoded.constData());
    curl_easy_setopt(m_handle, CURLOPT_WRITEDATA, &body);
    return curl_easy_perform(m_handle) == CURLE_OK ? body : QByteArray();
}
