// A link owner that writes down every call as a line of text.
#pragma once

#include <string>
#include <vector>

#include "link/link_owner.h"

namespace linktest {

class RecordingOwner : public CLinkOwner {
public:
  void OnHoldingRecord(KdlMsg*) override { log.push_back("holding"); }
  void OnHoldingsEnd(int status) override {
    log.push_back("holding end " + std::to_string(status));
  }
  void OnPositionRecord(int exchange, KdlMsg*) override {
    log.push_back("position " + std::to_string(exchange));
  }
  void OnAllPositionsRecord(KdlMsg*) override { log.push_back("all-positions"); }
  void OnAllPositionsEnd() override { log.push_back("all-positions end"); }
  void OnPriceRecord(int exchange, int32_t price, const std::string& symbol, int32_t value32,
                     int32_t value63179) override {
    log.push_back("price " + std::to_string(exchange) + " " + std::to_string(price) + " " + symbol +
                  " " + std::to_string(value32) + " " + std::to_string(value63179));
  }
  void OnPricesEnd() override { log.push_back("prices end"); }
  void OnPresentValuesRecord(KdlMsg*) override { log.push_back("present-values"); }
  void OnPresentValuesEnd() override { log.push_back("present-values end"); }
  void OnMrvCjRecord(KdlMsg*) override { log.push_back("mrv_cj"); }
  void OnUserPeerValue(const std::string& peer) override { log.push_back("peer " + peer); }
  int ClientIdCount() const override { return clientIds; }
  void LookupNseTradingSymbol() override { log.push_back("nse lookup"); }
  void OnPositionsComplete(int exchange) override {
    log.push_back("complete " + std::to_string(exchange));
  }

  int clientIds = 0;
  std::vector<std::string> log;
};

} // namespace linktest
