#ifndef SONOLET_ALBUM_H
#define SONOLET_ALBUM_H

#include "Handle.h"
#include "Object.h"

// An album of the catalogue, as script sees it. Made by Factory.
class Album final : public Object {
public:
    // The constructor object of the root.
    Album();
    Album(sp_session* librarySession,
          sp_album* album,
          const orvo::shared_ptr<LibWrapper>& libraryShare);
    ~Album() override;

    // Script: a new wrapper for the album that a link names.
    static void create(jspp::function_context& context);

    // Borrowed. Throws when the wrapper has none.
    sp_album* getHandle() const { return handle.get(); }

private:
    void name(jspp::function_context& context) const;
    void artist(jspp::function_context& context) const;
    void cover(jspp::function_context& context) const;
    void isLoaded(jspp::function_context& context) const;
    void albumType(jspp::function_context& context) const;
    void year(jspp::function_context& context) const;
    void isAvailable(jspp::function_context& context) const;

    void releaseHandle() noexcept override { handle.release(); }

    Handle<sp_album> handle;
};

#endif
