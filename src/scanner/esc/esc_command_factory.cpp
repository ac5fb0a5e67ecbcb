#include "scanner/esc/esc_command_factory.h"

#include <algorithm>
#include <utility>

#include "common/exception.h"
#include "qvn/transport/esc_command_table.h"
#include "scanner/esc/esc_commands.h"
#include "scanner/esc/standard_esc_command.h"

namespace qvn {
namespace {

template <std::size_t... Rows>
void registerTable(EscCommandFactory& factory, std::index_sequence<Rows...>) {
  (factory.registerCommand(NamedEscCommand<Rows>()), ...);
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
  if (!esc::isCommand(bytesOf(data))) return null_.create();
  for (const auto& prototype : prototypes_) {
    if (!prototype->isA(data)) continue;
    auto command = prototype->create(data);
    return command != nullptr ? std::move(command) : null_.create();
  }
  return std::make_unique<StandardEscCommand>(data);
}

void EscCommandFactory::registerCommand(const EscCommand& prototype) {
  CriticalSectionLock lock(lock_);
  const std::string name = prototype.getName();
  if (std::any_of(prototypes_.begin(), prototypes_.end(),
                  [&](const auto& registered) { return registered->getName() == name; }))
    return;
  if (auto clone = prototype.create()) prototypes_.push_back(std::move(clone));
}

}  // namespace qvn
