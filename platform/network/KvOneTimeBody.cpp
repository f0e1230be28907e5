#include "KvOneTimeBody.h"

#include <cstring>

qint64 KvOneTimeBody::readData(char* data, qint64 maximum)
{
    const qint64 length = qMin(maximum, m_body.size() - pos());
    if (length <= 0)
        return 0;
    std::memcpy(data, m_body.constData() + pos(), static_cast<size_t>(length));
    return length;
}

qint64 KvOneTimeBody::writeData(const char*, qint64)
{
    return -1;
}
