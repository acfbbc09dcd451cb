// The least that a Qt program does to show a white window of the size of the progress window: what the start
// of Join is measured against.

#include <QApplication>
#include <QPalette>
#include <QWidget>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QWidget window;
    window.setPalette(QPalette(Qt::white));
    window.setFixedSize(380, 112);
    window.move(450, 344);
    window.show();
    return QApplication::exec();
}
