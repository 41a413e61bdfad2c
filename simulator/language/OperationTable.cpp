// The table of operations, made of the kit's one list.

#include <vorn_testing/Operations.h>

#include <algorithm>
#include <stdexcept>

#include "Bind.h"
#include "device/Attachments.h"

namespace vorn_speaker {

namespace {

struct Table : vorn_testing::OperationVisitor {
  std::vector<Operation> operations;

  Table() { vorn_testing::visitOperations(*this); }

  template <class OfHost, class OfAdapter>
  void down(const vorn_testing::Operation& listed, OfHost, OfAdapter function) {
    operations.push_back(member(listed, function));
  }

  template <class OfAdapter>
  void up(const vorn_testing::Operation& listed, OfAdapter function) {
    operations.push_back(member(listed, function));
  }

  /// The media player's and the stream's, whose arguments no line can hold.
  template <class OfClass>
  void own(const vorn_testing::Operation& listed, OfClass) {
    if (listed.adapter == std::string("FileLogger")) return;  // the trace is the library's own
    const auto named = [&](const Operation& row) {
      return row.adapter == listed.adapter && row.name == listed.name;
    };
    const auto row = std::find_if(m_attachments.begin(), m_attachments.end(), named);
    if (row == m_attachments.end())
      throw std::logic_error(std::string("Attachments has no row for ") + listed.adapter + "." + listed.name);
    operations.push_back(*row);
    operations.back().guard = listed.guard;
  }

 private:
  const std::vector<Operation> m_attachments = attachmentOperations();
};

}  // namespace

const std::vector<Operation>& operations() {
  static const std::vector<Operation> table = Table().operations;
  return table;
}

}  // namespace vorn_speaker
