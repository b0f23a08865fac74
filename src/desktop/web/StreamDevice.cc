#include "desktop/web/StreamDevice.h"

#include <QPointer>

namespace widgets {

StreamDevice::StreamDevice(std::shared_ptr<platform::page_stream> stream)
    : stream_(std::move(stream)) {
  open(ReadOnly | Unbuffered);
  stream_->set_on_data([self = QPointer(this)] {
    if (self != nullptr) emit self->readyRead();
  });
}

StreamDevice::~StreamDevice() {
  stream_->set_on_data({});
  stream_->abandon();
}

// -1 at the end of the output; 0 says that more may come.
qint64 StreamDevice::readData(char* data, qint64 most) {
  auto const count = static_cast<qint64>(stream_->read(data, static_cast<std::size_t>(most)));
  return count == 0 && atEnd() ? -1 : count;
}

}  // namespace widgets
