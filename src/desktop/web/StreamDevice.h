#pragma once

#include "platform/html/page_stream.h"

#include <QIODevice>

#include <memory>

namespace widgets {

/// A stream as the browser reads it, on a thread of its own.
class StreamDevice final : public QIODevice {
 public:
  explicit StreamDevice(std::shared_ptr<platform::page_stream> stream);
  ~StreamDevice() override;

  bool isSequential() const override { return true; }
  qint64 bytesAvailable() const override { return static_cast<qint64>(stream_->available()); }
  bool atEnd() const override { return stream_->at_end() || stream_->is_abandoned(); }

 protected:
  qint64 readData(char* data, qint64 most) override;
  qint64 writeData(char const*, qint64) override { return -1; }

 private:
  std::shared_ptr<platform::page_stream> stream_;
};

}  // namespace widgets
