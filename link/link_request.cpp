#include "link/link_request.h"

#include <utility>

#include "common/message.h"
#include "link/envelope.h"

namespace vh {

CLinkRequest::CLinkRequest(std::string name)
    : name_(std::move(name)), fieldFailure_{name_ + " Request Failure", Report::Show},
      sendFailure_{name_ + " Request Failure", Report::Show},
      sent_(name_ + " request sent successfully") {}

CLinkRequest& CLinkRequest::Add(uint32_t tag, std::string_view text) {
  fields_.push_back({tag, std::string(text), {}});
  return *this;
}

CLinkRequest& CLinkRequest::Add(uint32_t tag, std::string_view text, std::string failureText) {
  fields_.push_back({tag, std::string(text), std::move(failureText)});
  return *this;
}

CLinkRequest& CLinkRequest::OnFieldFailure(std::string text, Report report) {
  fieldFailure_ = {std::move(text), report};
  return *this;
}

CLinkRequest& CLinkRequest::OnSendFailure(std::string text, Report report) {
  sendFailure_ = {std::move(text), report};
  return *this;
}

CLinkRequest& CLinkRequest::OnSent(std::string statusText) {
  sent_ = std::move(statusText);
  return *this;
}

CLinkRequest UserPeerRequest(std::string_view userId) {
  CLinkRequest request("om_get_user_peer_data");
  request.Add(kTagUserId, userId, "add source user id Request Failure");
  return request;
}

void ReportOutcome(const OutcomeText& outcome) {
  if (outcome.report != Report::Show)
    SetStatusText(outcome.text);
  if (outcome.report != Report::Status)
    ShowMessage(outcome.text);
}

} // namespace vh
