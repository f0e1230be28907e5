#include "LooksTexture.h"

#include <Qt3DRender/QTextureDataUpdate>
#include <Qt3DRender/QTextureImageData>
#include <Qt3DRender/QTextureImageDataGenerator>

#include <QtGui/QOpenGLTexture>

using namespace Qt3DRender;

namespace {

int valueSize(LooksTexture::Values values)
{
    return values == LooksTexture::Values::Floats ? int(sizeof(float)) : 1;
}

class FirstImage : public QTextureImageDataGenerator
{
public:
    explicit FirstImage(QTextureImageDataPtr image)
        : m_image(std::move(image))
    {
    }

    QTextureImageDataPtr operator()() override { return m_image; }
    bool operator==(const QTextureImageDataGenerator& other) const override
    {
        const FirstImage* const image = functor_cast<FirstImage>(&other);
        return image && image->m_image == m_image;
    }
    QT3D_FUNCTOR(FirstImage)

private:
    QTextureImageDataPtr m_image;
};

class GeneratedImage : public QAbstractTextureImage
{
public:
    GeneratedImage(QTextureImageDataGeneratorPtr generator, Qt3DCore::QNode* parent)
        : QAbstractTextureImage(parent)
        , m_generator(std::move(generator))
    {
    }

protected:
    QTextureImageDataGeneratorPtr dataGenerator() const override { return m_generator; }

private:
    QTextureImageDataGeneratorPtr m_generator;
};

} // namespace

LooksTexture::LooksTexture(Values values, int width, int rows, const QByteArray& bytes,
                           Qt3DCore::QNode* parent)
    : QTexture2D(parent)
    , m_values(values)
    , m_width(width)
{
    setGenerateMipMaps(false);
    setMinificationFilter(QAbstractTexture::Nearest);
    setMagnificationFilter(QAbstractTexture::Nearest);
    setSize(width, rows);
    setFormat(values == Values::Floats ? QAbstractTexture::RGBA32F : QAbstractTexture::RGBA8_UNorm);
    addTextureImage(
        new GeneratedImage(QTextureImageDataGeneratorPtr(new FirstImage(imageOf(rows, bytes))), this));
}

QTextureImageDataPtr LooksTexture::imageOf(int rows, const QByteArray& bytes) const
{
    const bool isFloat = m_values == Values::Floats;
    auto image = QTextureImageDataPtr::create();
    image->setTarget(QOpenGLTexture::Target2D);
    image->setWidth(m_width);
    image->setHeight(rows);
    image->setDepth(1);
    image->setFaces(1);
    image->setLayers(1);
    image->setMipLevels(1);
    image->setFormat(isFloat ? QOpenGLTexture::RGBA32F : QOpenGLTexture::RGBA8_UNorm);
    image->setPixelFormat(QOpenGLTexture::RGBA);
    image->setPixelType(isFloat ? QOpenGLTexture::Float32 : QOpenGLTexture::UInt8);
    image->setData(bytes, 4 * valueSize(m_values), false);
    return image;
}

void LooksTexture::sendRows(int first, int count, const QByteArray& bytes)
{
    if (count == 0)
        return;
    const int rowSize = m_width * 4 * valueSize(m_values);
    QTextureDataUpdate update;
    update.setY(first);
    update.setData(imageOf(count, bytes.mid(first * rowSize, count * rowSize)));
    updateData(update);
}
