#include "common/message.h"

#include <cstdio>

namespace vh {
namespace {

MessageSink& messageSink() {
  static MessageSink sink;
  return sink;
}

MessageSink& statusSink() {
  static MessageSink sink;
  return sink;
}

std::string& lastStatus() {
  static std::string text;
  return text;
}

} // namespace

void ShowMessage(std::string_view text) {
  if (messageSink()) {
    messageSink()(text);
    return;
  }
  std::fprintf(stderr, "message: %.*s\n", static_cast<int>(text.size()), text.data());
}

MessageSink SetMessageSink(MessageSink sink) {
  MessageSink old = std::move(messageSink());
  messageSink() = std::move(sink);
  return old;
}

void SetStatusText(std::string_view text) {
  lastStatus().assign(text);
  if (statusSink())
    statusSink()(text);
}

const std::string& LastStatusText() {
  return lastStatus();
}

MessageSink SetStatusSink(MessageSink sink) {
  MessageSink old = std::move(statusSink());
  statusSink() = std::move(sink);
  return old;
}

ScopedMessageRecorder::ScopedMessageRecorder() {
  oldMessage_ = SetMessageSink([this](std::string_view t) { messages_.emplace_back(t); });
  oldStatus_ = SetStatusSink([this](std::string_view t) { statuses_.emplace_back(t); });
}

ScopedMessageRecorder::~ScopedMessageRecorder() {
  SetMessageSink(std::move(oldMessage_));
  SetStatusSink(std::move(oldStatus_));
}

} // namespace vh
