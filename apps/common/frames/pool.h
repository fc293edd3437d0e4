// Pictures whose memory is used again. A decoder's own picture derives from PictureMemory or has one.
#pragma once

#include <memory>
#include <new>
#include <vector>

#include "frames/plane.h"

namespace vekapp {

// Picture is made by Picture(format). A picture comes back to the pool when its last owner lets it go; its samples keep
// what they held. Pictures of an older format are freed then. The pool may die first.
template <class Picture>
class PicturePool {
  public:
    std::shared_ptr<Picture> take(const PictureFormat& format) {
        if (format != shelf_->format) {
            shelf_->format = format;
            shelf_->free.clear();
        }
        std::unique_ptr<Picture> picture;
        if (shelf_->free.empty()) {
            picture = std::make_unique<Picture>(format);
        } else {
            picture = std::move(shelf_->free.back());
            shelf_->free.pop_back();
        }
        const std::weak_ptr<Shelf> home = shelf_;
        return std::shared_ptr<Picture>(picture.release(), [home, format](Picture* p) {
            std::unique_ptr<Picture> owned(p);
            const auto shelf = home.lock();
            if (shelf == nullptr || shelf->format != format) return;
            try {
                shelf->free.push_back(std::move(owned));
            } catch (const std::bad_alloc&) {  // then it is freed
            }
        });
    }

  private:
    struct Shelf {
        PictureFormat format;
        std::vector<std::unique_ptr<Picture>> free;
    };
    std::shared_ptr<Shelf> shelf_ = std::make_shared<Shelf>();
};

}  // namespace vekapp
