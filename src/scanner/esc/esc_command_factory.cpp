#include "scanner/esc/esc_command_factory.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "scanner/esc/esc_commands.h"
#include "scanner/esc/standard_esc_command.h"

namespace qvn {
namespace {

template <std::size_t... Rows>
void registerTable(EscCommandFactory& factory, std::index_sequence<Rows...>) {
  (factory.registerCommand(NamedEscCommand<Rows>()), ...);
}

std::uint64_t asWord(const std::uint8_t* header) {
  std::uint64_t word = 0;
  std::memcpy(&word, header, sizeof word);
  return word;
}

}  // namespace

EscCommandFactory& EscCommandFactory::getInstance() {
  static EscCommandFactory factory;
  return factory;
}

EscCommandFactory::EscCommandFactory() {
  registerTable(*this, std::make_index_sequence<esc::kCommands.size()>());
}

std::unique_ptr<EscCommand> EscCommandFactory::makeCommand(const Data& data) const {
  if (data.getLength() < esc::kHeaderLength || data.getBuffer()[0] != esc::kEscape) return null_.create();
  const std::uint64_t header = asWord(data.getBuffer());
  for (const Registered& registered : registered_) {
    if ((header & registered.mask) != registered.header) continue;
    if (registered.mask == 0 && !registered.prototype->isA(data)) continue;
    if (auto command = registered.prototype->create(data)) return command;
    return null_.create(data);
  }
  return std::make_unique<StandardEscCommand>(data);
}

void EscCommandFactory::registerCommand(const EscCommand& prototype) {
  CriticalSectionLock lock(lock_);
  const std::string name = prototype.getName();
  const bool known = std::any_of(registered_.begin(), registered_.end(), [&](const Registered& registered) {
    return registered.prototype->getName() == name;
  });
  if (known) return;
  std::unique_ptr<EscCommand> clone = prototype.create();
  const esc::Prefix pattern = prototype.pattern();
  if (clone == nullptr) return;
  std::array<std::uint8_t, esc::kHeaderLength> mask{};
  std::fill_n(mask.begin(), pattern.length, 0xFF);
  registered_.push_back(
      {asWord(pattern.bytes.data()) & asWord(mask.data()), asWord(mask.data()), std::move(clone)});
}

}  // namespace qvn
