#include "scanner/bpd/job/job_parameter_store.h"

#include "bidi/xml/parser_simple.h"
#include "common/leading_number.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

std::string element(std::string_view key, std::string_view value) {
  std::string text;
  text.append("<").append(key).append(">").append(value).append("</").append(key).append(">");
  return text;
}

// Whether the element can be read back from among others.
bool canBeKept(const std::string& key, const std::string& value) {
  if (value.find_first_of("<&") != std::string::npos) return false;
  const auto read = ParserSimple(element(key, value.empty() ? "0" : value)).values();
  return read.size() == 1 && read.begin()->first == key;
}

}  // namespace

std::uint32_t JobParameterStore::setJobParameter(std::uint32_t clientId, const std::string& key,
                                                 const std::string& value) {
  if (!canBeKept(key, value)) return QRN_ERROR_INVALID_PARAMETER;
  const std::lock_guard<std::mutex> lock(mutex_);
  std::string& text = texts_[clientId];
  auto parameters = ParserSimple(text).values();
  parameters.insert_or_assign(key, value);
  text.clear();
  for (const auto& [name, content] : parameters) text += element(name, content);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t JobParameterStore::getJobParameter(std::uint32_t clientId, std::string_view key) const {
  const auto parameters = getJobParameters(clientId);
  const auto found = parameters.find(key);
  return found == parameters.end() ? 0 : leadingNumber<std::uint32_t>(found->second);
}

std::map<std::string, std::string, std::less<>> JobParameterStore::getJobParameters(
    std::uint32_t clientId) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = texts_.find(clientId);
  if (found == texts_.end()) return {};
  return ParserSimple(found->second).values();
}

void JobParameterStore::clearJobParameters(std::uint32_t clientId) {
  const std::lock_guard<std::mutex> lock(mutex_);
  texts_.erase(clientId);
}

}  // namespace qvn
