// The library's load and the settings of the whole process. What has no result must be the old one or the new one.
#include "api/export_support.h"
#include "api/library_lifetime.h"
#include "api/library_state.h"
#include "fault/host_objects.h"
#include "transport/server_settings.h"

namespace kest::testing {
namespace {

// Without a String of the library's, which would be one more allocation to fail.
bool Is(const HttpUrl& url, const std::string& host, std::uint16_t port) {
  return host == url.host.Text() && url.port == port;
}

bool IsServer(const char* host, std::uint16_t port) {
  return Is(Settings().server, host, port);
}
bool IsProxy(const char* host, std::uint16_t port) {
  return Is(Settings().proxy, host, port);
}
bool IsGuid(const std::string& guid) {
  return guid == State().applicationGuid.Text();
}

bool HasKey() {
  RsaPublicCipher copy;
  return copy.CopyKeyFrom(Settings().serverPublicKey);
}

// A new server in place of the one that is set.
class SettingTheServer : public Operation {
 public:
  bool Run() override { return KestSetServer("new.example", 9090, key.c_str()) == 1; }
  // Whether there are sockets is found out by the calls that need them.
  std::string EndingAfter(const Failure&) const override { return done; }
  std::string Fault(bool isDone, const Failure&) override {
    const bool isNew = IsServer("new.example", 9090);
    if (isDone) return isNew && HasKey() ? "" : "it is not set";
    if (!isNew && !IsServer("shop.example", 8080)) return "host and port are of two servers";
    return isNew && HasKey() ? "a failure has set it" : "";
  }

 protected:
  const std::string key = SealedServer::KeyText();

 private:
  // While there is another owner the host's name takes a block of its own.
  const String earlierHost = Settings().server.host;
};

class Configuring : public SettingTheServer {
 public:
  Configuring() {
    KestSetField(configuration, "SERVER", "new.example");
    KestSetField(configuration, "PORT", "9090");
    KestSetField(configuration, "TARVOPK", key.c_str());
  }
  ~Configuring() override { KestFreeFieldSet(configuration); }
  bool Run() override { return KestConfigureServer(configuration) == 1; }
  std::string Fault(bool isDone, const Failure& failure) override {
    const Fields asSet = {{"SERVER", "new.example"}, {"PORT", "9090"}, {"TARVOPK", key}};
    if (FieldsOf(*FromHandle(configuration)) != asSet) return "the configuration has changed";
    if (KestGetErrorCode(configuration) != 0) return "the configuration has an error code";
    return SettingTheServer::Fault(isDone, failure);
  }

 private:
  KestFieldSet* configuration = KestCreateFieldSet();
};

class SettingTheProxy : public Operation {
 public:
  ~SettingTheProxy() override { KestSetProxy("", 0); }
  bool Run() override {
    KestSetProxy("proxy.example", 3128);
    return IsProxy("proxy.example", 3128);
  }
  std::string EndingAfter(const Failure&) const override { return done; }
  std::string Fault(bool isDone, const Failure&) override {
    return isDone || IsProxy("", 0) ? "" : "host and port are of two proxies";
  }
};

class SettingTheGuid : public Operation {
 public:
  bool Run() override {
    KestSetApplicationGuid("guid-2");
    return IsGuid("guid-2");
  }
  std::string EndingAfter(const Failure&) const override { return done; }
  std::string Fault(bool isDone, const Failure&) override {
    return IsGuid(isDone ? "guid-2" : "guid-1") ? "" : "the GUID is another";
  }
};

// A library without sockets loads all the same, and goes again.
class LoadingTheLibrary : public Operation {
 public:
  ~LoadingTheLibrary() override { State().module = nullptr; }
  bool Run() override {
    State().module = nullptr;
    AttachProcess(this);
    DetachProcess();
    return State().module == this;
  }
  std::string EndingAfter(const Failure&) const override { return done; }
  std::string Fault(bool isDone, const Failure&) override {
    return isDone && HasKey() && IsServer("shop.example", 8080) ? "" : "the settings have changed";
  }
};

}  // namespace

std::vector<OperationCase> SettingOperations() {
  return {Case<SettingTheServer>("SettingTheServer", {failed}, {failed}),
          Case<Configuring>("Configuring", {failed}, {failed}),
          Case<SettingTheProxy>("SettingTheProxy", {failed}, {failed}),
          Case<SettingTheGuid>("SettingTheGuid", {failed}, {failed}),
          Case<LoadingTheLibrary>("LoadingTheLibrary", {}, {done})};
}

}  // namespace kest::testing
