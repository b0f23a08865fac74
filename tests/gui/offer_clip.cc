// offer_clip TEXT [FORMAT=VALUE]...: puts a text on the clipboard, with other forms of it or marks,
// and has it until it is ended.

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

int main(int argc, char** argv) {
  QGuiApplication const app(argc, argv);
  auto* const data = new QMimeData;
  data->setText(QString::fromLocal8Bit(argv[1]));
  for (int n = 2; n < argc; ++n) {
    QByteArray const argument(argv[n]);
    qsizetype const end = argument.indexOf('=');
    data->setData(QString::fromLatin1(argument.left(end)), argument.mid(end + 1));
  }
  QGuiApplication::clipboard()->setMimeData(data);
  return QGuiApplication::exec();
}
