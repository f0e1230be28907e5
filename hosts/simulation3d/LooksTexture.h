#pragma once

#include <Qt3DRender/QTexture>

/// A texture of 4 values for each element of a building, kept in rows.
class LooksTexture : public Qt3DRender::QTexture2D
{
    Q_OBJECT

public:
    enum class Values
    {
        Bytes,
        Floats,
    };

    /// @param bytes all rows
    LooksTexture(Values values, int width, int rows, const QByteArray& bytes,
                 Qt3DCore::QNode* parent = nullptr);

    /// Takes rows out of @p bytes, which hold all.
    void sendRows(int first, int count, const QByteArray& bytes);

private:
    Qt3DRender::QTextureImageDataPtr imageOf(int rows, const QByteArray& bytes) const;

    Values m_values;
    int m_width;
};
