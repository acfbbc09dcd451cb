// The smallest Qt program that shows a white window of the size of the progress window, with a line of text
// if one is given. The start of Join is measured against it.

#include <QApplication>
#include <QLabel>
#include <QPalette>
#include <QWidget>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QWidget window;
    window.setPalette(QPalette(Qt::white));
    window.setFixedSize(380, 112);
    window.move(450, 344);
    QLabel label(&window);
    if (argc > 1) {
        label.setText(QString::fromUtf8(argv[1]));
        label.setGeometry(20, 70, 340, 30);
    } else {
        label.hide();
    }
    window.show();
    return QApplication::exec();
}
