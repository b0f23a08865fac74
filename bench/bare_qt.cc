// What Qt alone costs: an empty window, or a plain text widget with a file in it.

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QPlainTextEdit>

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  if (argc < 2) {
    QWidget window;
    window.resize(900, 650);
    window.show();
    return app.exec();
  }
  QPlainTextEdit edit;
  edit.setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  edit.setLineWrapMode(QPlainTextEdit::NoWrap);
  edit.resize(900, 650);
  edit.show();
  QFile file(QString::fromLocal8Bit(argv[1]));
  if (!file.open(QIODevice::ReadOnly)) return 1;
  edit.setPlainText(QString::fromUtf8(file.readAll()));
  return app.exec();
}
