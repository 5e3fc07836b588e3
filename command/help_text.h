#pragma once

#include <span>
#include <string>
#include <string_view>

namespace zan {

struct HelpTopic {
  std::string_view name; // upper case, compared whole
  std::string_view text;
};

std::span<const HelpTopic> help_topics(); // all but VERSION, whose text is the version banner

// What HELP says on a topic (in any case); the summary of commands when there is no such topic.
std::string help_text(std::string_view topic, std::string_view version, std::string_view version_banner);

} // namespace zan
