#include "scanner/bpd/job/scan_parameter_tree.h"

#include <array>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "bidi/element/integer_elem.h"
#include "common/leading_number.h"
#include "scanner/bpd/job/job_parameter_store.h"

namespace qvn {
namespace {

using Parameters = std::map<std::string, std::string, std::less<>>;

struct Row {
  const char* element;
  std::string_view parameter;
};

constexpr std::array kScanParameters = {
    Row{"contentType", "Scan.Param.Content"}, Row{"darkness", "Scan.Param.Darkness"},
    Row{"contrast", "Scan.Param.Contrast"},   Row{"originalMediaSize", "Scan.Param.MediaSize"},
    Row{"bitdepth", "Scan.Param.BitDepth"},   Row{"resolution", "Scan.Param.Resolution"},
    Row{"source", "Scan.Param.Source"},
};
constexpr std::array kTopLeft = {Row{"x", "Scan.Doc.Window.TopLeft.X"},
                                 Row{"y", "Scan.Doc.Window.TopLeft.Y"}};
constexpr std::array kBottomRight = {Row{"x", "Scan.Doc.Window.BottomRight.X"},
                                     Row{"y", "Scan.Doc.Window.BottomRight.Y"}};
constexpr std::array kDocumentParameters = {Row{"compression", "Scan.Doc.Compression"},
                                            Row{"fileFormat", "Scan.Doc.FileFormat"}};

// Always there.
constexpr Row kOrientation{"orientation", "Scan.Param.Orientation"};

template <std::size_t Count>
std::unique_ptr<MapElem> makeMap(const Parameters& parameters, const std::array<Row, Count>& rows) {
  auto map = std::make_unique<MapElem>();
  for (const Row& row : rows) {
    const auto found = parameters.find(row.parameter);
    if (found == parameters.end() || found->second.empty()) continue;
    map->addChild(row.element, std::make_unique<IntegerElem>(leadingNumber<std::int32_t>(found->second)));
  }
  return map;
}

}  // namespace

std::unique_ptr<MapElem> makeScanParameterTree(std::uint32_t clientId) {
  const Parameters parameters = JobParameterStore::getInstance().getJobParameters(clientId);
  auto window = std::make_unique<MapElem>();
  window->addChild("topLeft", makeMap(parameters, kTopLeft));
  window->addChild("bottomRight", makeMap(parameters, kBottomRight));

  auto scan = makeMap(parameters, kScanParameters);
  const auto orientation = parameters.find(kOrientation.parameter);
  scan->addChild(kOrientation.element,
                 std::make_unique<IntegerElem>(
                     orientation == parameters.end() ? 0 : leadingNumber<std::int32_t>(orientation->second)));
  scan->addChild("scanWindow", std::move(window));

  auto root = std::make_unique<MapElem>();
  root->addChild("scanParameters", std::move(scan));
  root->addChild("documentParameters", makeMap(parameters, kDocumentParameters));
  root->addChild("usbParameters", std::make_unique<MapElem>());
  return root;
}

}  // namespace qvn
