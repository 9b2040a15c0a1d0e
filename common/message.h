// The one way anything in the system tells the user something.
//
// The behaviour is written in terms of modal OK message boxes with fixed
// texts and of status texts that are composed but never shown. Both go
// through replaceable sinks so that the Qt-free core can report, the plug-in
// can show a QMessageBox, a headless run can log, and a test can record the
// exact texts.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vh {

using MessageSink = std::function<void(std::string_view text)>;

// Shows `text` through the installed message sink (a modal OK box in the
// plug-in). With no sink installed the text goes to stderr.
void ShowMessage(std::string_view text);

// Installs `sink` (an empty function restores the stderr default) and
// returns the sink that was installed before.
MessageSink SetMessageSink(MessageSink sink);

// Records a status text: composed for the user's information, deliberately
// not shown. The last one is kept; the status sink (stderr-free by default)
// sees each.
void SetStatusText(std::string_view text);
const std::string& LastStatusText();
MessageSink SetStatusSink(MessageSink sink);

// Installs recording sinks for the lifetime of the object and restores the
// previous ones afterwards. For tests and headless runs.
class ScopedMessageRecorder {
public:
  ScopedMessageRecorder();
  ~ScopedMessageRecorder();
  ScopedMessageRecorder(const ScopedMessageRecorder&) = delete;
  ScopedMessageRecorder& operator=(const ScopedMessageRecorder&) = delete;

  const std::vector<std::string>& messages() const { return messages_; }
  const std::vector<std::string>& statuses() const { return statuses_; }
  void clear() {
    messages_.clear();
    statuses_.clear();
  }

private:
  std::vector<std::string> messages_;
  std::vector<std::string> statuses_;
  MessageSink oldMessage_;
  MessageSink oldStatus_;
};

} // namespace vh
