#include "bench/riskd/widely_held_store.h"

#include <filesystem>

namespace riskd::bench {

bool MakeWidelyHeldStore(const std::string& dbPath, int64_t clients, StoreSetup* setup, Db* db,
                         std::string* error) {
  setup->dbPath = dbPath;
  setup->sample.holdings = 2000;
  std::filesystem::remove(dbPath);
  const auto quiet = [](const std::string&) {};
  return SetUpStore(*setup, quiet, db, error) &&
         db->Exec("BEGIN;"
                  "CREATE TEMP TABLE n(i INTEGER PRIMARY KEY);"
                  "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM c WHERE i<" +
                      std::to_string(clients) +
                      ") INSERT INTO n SELECT i FROM c;"
                      "DELETE FROM holding WHERE scrip_id=1;"
                      "INSERT INTO client SELECT printf('B%07d',i),'' FROM n;"
                      "INSERT INTO holding SELECT printf('B%07d',i),1,p,1+i%1999,i%7,i%5,i%3,0,"
                      "i%11,i%11,i%13,i%13/2,1000+250*(i%30),CASE WHEN i%8=0 THEN NULL ELSE i%3 "
                      "END FROM n, (SELECT 'CNC' p UNION ALL SELECT 'MTF') ORDER BY 1,3;"
                      "COMMIT;",
                  error);
}

} // namespace riskd::bench
