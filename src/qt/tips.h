// What the fields are for, where their forms don't say it themselves.
#pragma once

#include <QString>
#include <string>

namespace vantrel::qt {

/// In the operator's language; empty for a control that needs none.
QString tipFor(const std::string& form, const std::string& control);

}  // namespace vantrel::qt
