#pragma once
#include "platform/DesktopLook.h"

#include <functional>
#include <vector>

namespace tunelark::test {

// A desktop whose appearance the test sets; change() announces it as the portal's signal would.
class FakeDesktopLook : public DesktopLook {
public:
    DesktopAppearance appearance() const override { return current; }
    void setOnChanged(std::function<void()> onChanged) override { onChanged_ = std::move(onChanged); }
    void setToolkitDark(bool dark) override { toolkitDark.push_back(dark); }

    void change(DesktopAppearance next) {
        current = std::move(next);
        if (onChanged_) onChanged_();
    }
    bool listened() const { return bool(onChanged_); }

    DesktopAppearance current;
    std::vector<bool> toolkitDark;  // every setToolkitDark, in order

private:
    std::function<void()> onChanged_;
};

}  // namespace tunelark::test
