// Stands in for libcups, as far as the library calls it. What its server does is in the environment variable
// QVN_FAKE_CUPS: nothing (there is none), "hang", "status N", or the queues, one a line: a name, a blank and
// a device URI.
#include <cups/cups.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

struct _http_s {};
struct _ipp_attribute_s {
  ipp_tag_t group;
  std::string name;
  std::string text;
};
struct _ipp_s {
  ipp_status_t status = IPP_STATUS_OK;
  std::vector<_ipp_attribute_s> attributes;
  std::size_t next = 0;
};

#pragma GCC visibility push(default)
extern "C" {

const char* cupsServer() { return "server"; }
int ippPort() { return 631; }
http_encryption_t cupsEncryption() { return HTTP_ENCRYPTION_NEVER; }
void cupsSetPasswordCB2(cups_password_cb2_t, void*) {}
http_t* httpConnect2(const char*, int, http_addrlist_t*, int, http_encryption_t, int, int, int*) {
  return std::getenv("QVN_FAKE_CUPS") != nullptr ? new http_t : nullptr;
}
void httpSetTimeout(http_t*, double, http_timeout_cb_t, void*) {}
void httpClose(http_t* http) { delete http; }

ipp_t* ippNewRequest(ipp_op_t) { return new ipp_t; }
ipp_attribute_t* ippAddInteger(ipp_t*, ipp_tag_t, ipp_tag_t, const char*, int) { return nullptr; }
ipp_attribute_t* ippAddStrings(ipp_t*, ipp_tag_t, ipp_tag_t, const char*, int, const char*,
                               const char* const*) {
  return nullptr;
}
void ippDelete(ipp_t* message) { delete message; }

ipp_t* cupsDoRequest(http_t*, ipp_t* request, const char*) {
  ippDelete(request);
  std::istringstream script(std::getenv("QVN_FAKE_CUPS"));
  auto* const response = new ipp_t;
  response->attributes.push_back({IPP_TAG_OPERATION, "attributes-charset", "utf-8"});
  for (std::string name, rest; script >> name && std::getline(script >> std::ws, rest);) {
    if (name == "status") response->status = static_cast<ipp_status_t>(std::stoi(rest));
    // The order of a printer's attributes is the server's affair.
    response->attributes.push_back({IPP_TAG_PRINTER, "device-uri", rest});
    response->attributes.push_back({IPP_TAG_PRINTER, "printer-name", name});
    response->attributes.push_back({IPP_TAG_ZERO, "", ""});
  }
  if (script.str() == "hang") pause();
  return response;
}

ipp_status_t ippGetStatusCode(ipp_t* response) { return response->status; }
ipp_attribute_t* ippNextAttribute(ipp_t* response) {
  return response->next < response->attributes.size() ? &response->attributes[response->next++] : nullptr;
}
ipp_attribute_t* ippFirstAttribute(ipp_t* response) {
  response->next = 0;
  return ippNextAttribute(response);
}
ipp_tag_t ippGetGroupTag(ipp_attribute_t* attribute) { return attribute->group; }
const char* ippGetName(ipp_attribute_t* attribute) { return attribute->name.c_str(); }
const char* ippGetString(ipp_attribute_t* attribute, int, const char**) { return attribute->text.c_str(); }

}  // extern "C"
#pragma GCC visibility pop
