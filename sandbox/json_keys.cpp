#include "json_keys.h"

#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "fault.h"

namespace sandbox {
namespace {

using Json = nlohmann::ordered_json;

// An object that is parsed keeps its keys in a list and searches it from its beginning: one of very many keys takes
// seconds, and a repeated key is lost without a word. So they are watched as they come by, and nothing is kept of the
// values. (Watching by a callback of the parser would be no better: it searches each array for what was left out.)
class KeyWatch : public nlohmann::json_sax<Json> {
 public:
  bool start_object(std::size_t) override {
    open.emplace_back();
    return true;
  }

  bool key(std::string& key) override {
    std::set<std::string>& keys = open.back();
    if (!keys.insert(key).second) throw FaultError("the key " + Json(key).dump() + " stands twice in one object");
    if (keys.size() > mostKeys) throw FaultError("an object has more than " + std::to_string(mostKeys) + " keys");
    return true;
  }

  bool end_object() override {
    open.pop_back();
    return true;
  }

  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const std::string&) override { return true; }
  bool string(std::string&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

 private:
  std::vector<std::set<std::string>> open;  // the keys so far of each object that has not ended
};

}  // namespace

void CheckKeys(const std::string& text) {
  KeyWatch watch;
  Json::sax_parse(text, &watch);
}

}  // namespace sandbox
