// Renders SVG files to JPEG at their own size, on white: svg-to-jpg IN.svg OUT.jpg ...
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty() || args.size() % 2 != 0) {
        std::fprintf(stderr, "usage: svg-to-jpg IN.svg OUT.jpg [IN.svg OUT.jpg ...]\n");
        return 2;
    }
    for (qsizetype i = 0; i < args.size(); i += 2) {
        QSvgRenderer svg(args[i]);
        if (!svg.isValid()) {
            std::fprintf(stderr, "svg-to-jpg: cannot read %s\n", qPrintable(args[i]));
            return 1;
        }
        QImage image(svg.defaultSize(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::TextAntialiasing);
        svg.render(&painter);
        painter.end();
        if (!image.save(args[i + 1], "JPG", 92)) {
            std::fprintf(stderr, "svg-to-jpg: cannot write %s\n", qPrintable(args[i + 1]));
            return 1;
        }
    }
    return 0;
}
