#ifndef SONOLET_ALBUMBROWSE_H
#define SONOLET_ALBUMBROWSE_H

#include "Handle.h"
#include "Object.h"

// What is known of an album: its tracks and copyrights. Made by Factory.
class Albumbrowse final : public Object {
public:
    // The constructor object of the root.
    Albumbrowse();
    Albumbrowse(sp_session* librarySession,
                sp_albumbrowse* browse,
                const orvo::shared_ptr<LibWrapper>& libraryShare);

    // Script: browses an album, and calls a function with the result.
    static void create(jspp::function_context& context);

private:
    void album(jspp::function_context& context) const;
    void numCopyrights(jspp::function_context& context) const;
    void copyright(jspp::function_context& context) const;
    void artist(jspp::function_context& context) const;
    void track(jspp::function_context& context) const;
    void numTracks(jspp::function_context& context) const;
    void isLoaded(jspp::function_context& context) const;
    void error(jspp::function_context& context) const;
    void release(jspp::function_context& context) const;

    void releaseHandle() noexcept override { handle.release(); }

    Handle<sp_albumbrowse> handle;
};

#endif
