// The one fixed text of the Xray configuration, and how values get into it.
#ifndef TAVRIN_SRC_XRAYCONF_XRAY_TEMPLATE_H_
#define TAVRIN_SRC_XRAYCONF_XRAY_TEMPLATE_H_

#include <string>
#include <string_view>
#include <vector>

namespace vpn {

// A placeholder is a name between two percent signs; no other percent sign stands in the template.
extern const std::string_view kXrayTemplate;

struct TemplateValue {
  std::string_view name;
  std::string value;
};

// Replaces every placeholder in one pass, so that a value that looks like a placeholder stands as
// it is. A name without a value becomes empty.
std::string FillTemplate(std::string_view text, const std::vector<TemplateValue>& values);

}  // namespace vpn

#endif  // TAVRIN_SRC_XRAYCONF_XRAY_TEMPLATE_H_
