// The module that asks the machine's Avahi daemon, over D-Bus.
#include <avahi-client/client.h>
#include <avahi-client/lookup.h>
#include <avahi-common/address.h>
#include <avahi-common/malloc.h>
#include <avahi-common/simple-watch.h>
#include <avahi-common/strlst.h>
#include <netinet/in.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <memory>

#include "discovery/services.h"
#include "discovery/services_module.h"

namespace qvn::ipv4 {
namespace {

constexpr char kServiceType[] = "_pdl-datastream._tcp";

// As many services as one look takes in; anybody on the network can announce any number.
constexpr std::size_t kMaxServices = 1024;

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// The first of two texts with the same key counts (RFC 6763, 6.4).
std::map<std::string, std::string> textsOf(AvahiStringList* list) {
  std::map<std::string, std::string> texts;
  for (AvahiStringList* entry = list; entry != nullptr; entry = avahi_string_list_get_next(entry)) {
    const std::string text(reinterpret_cast<const char*>(avahi_string_list_get_text(entry)),
                           avahi_string_list_get_size(entry));
    const std::size_t equals = text.find('=');
    if (equals != std::string::npos)
      texts.emplace(lowerCase(text.substr(0, equals)), text.substr(equals + 1));
  }
  return texts;
}

// One look at what the daemon knows. Its callbacks run inside run().
class Lookup {
 public:
  Lookup() : poll_(avahi_simple_poll_new()) {
    if (poll_ == nullptr) return;
    int error = 0;
    client_.reset(
        avahi_client_new(avahi_simple_poll_get(poll_.get()), AvahiClientFlags{}, onClient, this, &error));
  }

  void browse() {
    if (client_ == nullptr) return;
    // It goes with the client, and so do the resolvers that are not freed before.
    browsing_ = avahi_service_browser_new(client_.get(), AVAHI_IF_UNSPEC, AVAHI_PROTO_INET, kServiceType,
                                          nullptr, AvahiLookupFlags{}, onBrowser, this) != nullptr;
  }

  void resolve(AvahiIfIndex interface, AvahiProtocol protocol, const char* name, const char* domain) {
    if (client_ == nullptr || started_ == kMaxServices) return;
    if (avahi_service_resolver_new(client_.get(), interface, protocol, name, kServiceType, domain,
                                   AVAHI_PROTO_INET, AvahiLookupFlags{}, onResolver, this) != nullptr) {
      ++started_;
      ++resolving_;
    }
  }

  std::vector<Service> run(ServiceDeadline deadline) {
    while (client_ != nullptr && !failed_ && (browsing_ || resolving_ > 0)) {
      const auto left =
          std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
      if (left <= 0) break;
      if (avahi_simple_poll_iterate(poll_.get(), static_cast<int>(std::min<std::int64_t>(left, INT_MAX))) !=
          0)
        break;
    }
    return std::move(services_);
  }

 private:
  static void onClient(AvahiClient*, AvahiClientState state, void* self) {
    if (state == AVAHI_CLIENT_FAILURE) static_cast<Lookup*>(self)->failed_ = true;
  }

  static void onBrowser(AvahiServiceBrowser*, AvahiIfIndex interface, AvahiProtocol protocol,
                        AvahiBrowserEvent event, const char* name, const char*, const char* domain,
                        AvahiLookupResultFlags, void* self) {
    auto* const lookup = static_cast<Lookup*>(self);
    if (event == AVAHI_BROWSER_NEW) lookup->resolve(interface, protocol, name, domain);
    if (event == AVAHI_BROWSER_ALL_FOR_NOW || event == AVAHI_BROWSER_FAILURE) lookup->browsing_ = false;
  }

  static void onResolver(AvahiServiceResolver* resolver, AvahiIfIndex, AvahiProtocol,
                         AvahiResolverEvent event, const char* name, const char*, const char*, const char*,
                         const AvahiAddress* address, std::uint16_t port, AvahiStringList* texts,
                         AvahiLookupResultFlags, void* self) {
    auto* const lookup = static_cast<Lookup*>(self);
    if (event == AVAHI_RESOLVER_FOUND && address->proto == AVAHI_PROTO_INET) {
      lookup->services_.push_back({name, {ntohl(address->data.ipv4.address), port}, textsOf(texts)});
    }
    avahi_service_resolver_free(resolver);
    --lookup->resolving_;
  }

  struct Free {
    void operator()(AvahiSimplePoll* poll) const { avahi_simple_poll_free(poll); }
    void operator()(AvahiClient* client) const { avahi_client_free(client); }
  };

  std::unique_ptr<AvahiSimplePoll, Free> poll_;
  std::unique_ptr<AvahiClient, Free> client_;  // null where no daemon runs
  bool failed_ = false;
  bool browsing_ = false;
  std::size_t started_ = 0;
  std::size_t resolving_ = 0;
  std::vector<Service> services_;
};

}  // namespace
}  // namespace qvn::ipv4

extern "C" __attribute__((visibility("default"))) void QvnIpv4FindServices(
    const std::string& name, qvn::ipv4::ServiceDeadline deadline, std::vector<qvn::ipv4::Service>& services) {
  qvn::ipv4::Lookup lookup;
  if (name.empty()) {
    lookup.browse();
  } else {
    lookup.resolve(AVAHI_IF_UNSPEC, AVAHI_PROTO_INET, name.c_str(), nullptr);
  }
  services = lookup.run(deadline);
}
