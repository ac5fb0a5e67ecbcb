// The rows of an exchange with a device: against the same request and reply on a bare socket, with and
// without a thread that is made and joined for it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ratio_table.h"

namespace qvn::bench {

// The ratios of one connection, both sides' exchanges in turn.
std::vector<double> exchangeRatios(const std::function<void()>& library, const std::function<void()>& bare);

// Puts the rows into the table. A round is a connection, made anew, and gives its exchangeRatios: where the
// system puts a connection's threads decides much, and stays so. `use` is what a user does by such exchanges.
void addExchangeRows(RatioTable& table, const std::string& library, const std::string& bare,
                     const std::string& use, const std::function<std::vector<double>()>& round);

}  // namespace qvn::bench
