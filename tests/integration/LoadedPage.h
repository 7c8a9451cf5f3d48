#pragma once
#include "main_window/PageFolder.h"
#include "platform/gtk/WkWebViewWithMouseEvent.h"

#include <optional>
#include <string>

namespace tunelark::test {

// The page's own web view serving the real page folder, as the program sets it up; finished() turns
// true once the page has loaded.
class LoadedPage {
public:
    LoadedPage()
        : folder_(TUNELARK_SOURCE_DIR "/resources/www"),
          view_(WkWebViewWithMouseEvent::Callbacks{
              [this](const std::string& path) -> std::optional<std::string> {
                  auto file = folder_.resolve(path);
                  return file ? std::optional<std::string>(file->string()) : std::nullopt;
              },
              nullptr, [this] { finished_ = true; }, nullptr}) {}

    WkWebViewWithMouseEvent& view() { return view_; }
    bool finished() const { return finished_; }

private:
    PageFolder folder_;
    bool finished_ = false;
    WkWebViewWithMouseEvent view_;
};

}  // namespace tunelark::test
