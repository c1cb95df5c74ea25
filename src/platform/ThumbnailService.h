#pragma once

#include <QImage>
#include <QString>

// Pictures of files: a thumbnail from the desktop's shared cache or its
// thumbnailer, else a scaled decode of an image file, else nothing (the caller
// then shows the type's icon). Slow: callers ask from worker threads, and
// implementations answer from any thread.
class ThumbnailService
{
public:
    virtual ~ThumbnailService() = default;
    // The picture of path fitting a square of size pixels, or a null image. With
    // asIcon the picture may be framed as an icon; without, it is the bare picture.
    virtual QImage imageWithPreviewOfFileAtPath(const QString &path, int size, bool asIcon) = 0;
};
