// A request as the link sends it: a name (tag 0) and an ordered list of text
// fields, with the texts that report its outcome. Each feature builds its
// own and hands it to CBackendLink::Send.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vh {

// How an outcome text reaches the user: a message box, the composed status
// text that is never shown, or both.
enum class Report { Show, Status, ShowAndStatus };

struct OutcomeText {
  std::string text;
  Report report;
};

class CLinkRequest {
public:
  struct Field {
    uint32_t tag;
    std::string text;
    std::string failureText; // empty: the request's field failure text
  };

  // Defaults: a field or send failure shows "<name> Request Failure"; a
  // sent request composes the status "<name> request sent successfully".
  explicit CLinkRequest(std::string name);

  // Appends a field; fields go out in the order they were added.
  CLinkRequest& Add(uint32_t tag, std::string_view text);
  // The same, with a failure text of its own for this field.
  CLinkRequest& Add(uint32_t tag, std::string_view text, std::string failureText);

  CLinkRequest& OnFieldFailure(std::string text, Report report);
  CLinkRequest& OnSendFailure(std::string text, Report report);
  CLinkRequest& OnSent(std::string statusText);

  const std::string& name() const { return name_; }
  const std::vector<Field>& fields() const { return fields_; }
  const OutcomeText& fieldFailure() const { return fieldFailure_; }
  const OutcomeText& sendFailure() const { return sendFailure_; }
  const std::string& sentText() const { return sent_; }

private:
  std::string name_;
  std::vector<Field> fields_;
  OutcomeText fieldFailure_;
  OutcomeText sendFailure_;
  std::string sent_;
};

// "om_get_user_peer_data" for `userId` (tag 31003); a failure to add the
// user id shows "add source user id Request Failure".
CLinkRequest UserPeerRequest(std::string_view userId);

// Reports `outcome` through ShowMessage and/or SetStatusText.
void ReportOutcome(const OutcomeText& outcome);

} // namespace vh
