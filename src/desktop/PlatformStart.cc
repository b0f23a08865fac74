#include "desktop/PlatformStart.h"

#include <QString>

#include <cstdio>
#include <cstdlib>

namespace widgets {
namespace {

struct starting {
  char const* what;
  int status;
  QtMessageHandler former;
  QString reasons;
};

starting* current = nullptr;

// Warnings that come first are the cause; what is fatal says no more than that all have failed.
[[noreturn]] void give_up(QString const& last) {
  QString const why = current->reasons.isEmpty() ? last : current->reasons;
  std::fflush(stdout);
  std::fprintf(stderr, "quirnote: %s: %s\n", current->what, qUtf8Printable(why.simplified()));
  std::fflush(stderr);
  std::_Exit(current->status);
}

void take_message(QtMsgType type, QMessageLogContext const& context, QString const& message) {
  if (type == QtFatalMsg) give_up(message);
  if (type == QtWarningMsg || type == QtCriticalMsg)
    current->reasons +=
        (current->reasons.isEmpty() ? QString() : QStringLiteral("; ")) + message.simplified();
  else
    current->former(type, context, message);
}

}  // namespace

PlatformStart::PlatformStart(char const* what, int status) {
  current = new starting{what, status, nullptr, {}};
  current->former = qInstallMessageHandler(take_message);
}

PlatformStart::~PlatformStart() {
  qInstallMessageHandler(current->former);
  // It has started all the same.
  if (!current->reasons.isEmpty()) std::fprintf(stderr, "%s\n", qUtf8Printable(current->reasons));
  delete current;
  current = nullptr;
}

}  // namespace widgets
