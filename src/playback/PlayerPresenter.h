#pragma once

#include "SlideshowView.h"
#include "media/MediaTypes.h"

#include <memory>

namespace tb {

class Queue;

// Everything a show's window is built from, read from the settings at the moment of start.
struct ShowRequest {
    bool screensaverMode = false;
    GridOption grid = GridOption::none;
    SlideshowConfiguration single;
    int selectedDisplayID = 0;
    bool startInWindowedMode = false;
    bool floatOnTop = false;
    bool syncGridTransitions = false;
};

// Builds the player and its window on the chosen screen.
class PlayerPresenter {
public:
    virtual ~PlayerPresenter() = default;
    virtual void present(const ShowRequest& request, std::shared_ptr<Queue> queue) = 0;
};

} // namespace tb
