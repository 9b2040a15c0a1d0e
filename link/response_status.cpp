#include "link/response_status.h"

#include "common/message.h"
#include "link/envelope.h"
#include "link/field_readers.h"

namespace vh {

int CheckResponseStatus(const KdlMsg* msg, std::string_view requestName, int32_t* kind,
                        int /*flag*/) {
  uint32_t count = 0;
  if (!kdl_get_field(msg, kTagStatus, &count, nullptr))
    return kStatusRecord;
  int32_t status = 0;
  if (!ReadIntField(msg, kTagStatus, 0, &status, kind)) {
    if (requestName == "om_get_client_reports")
      ShowMessage("Lien Report Download Completed.");
    return kStatusEnded;
  }
  if (status != 0)
    return status;
  ShowMessage("Fatal error.Please contact administrator.");
  return kStatusEnded;
}

} // namespace vh
