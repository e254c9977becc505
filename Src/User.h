#ifndef SONOLET_USER_H
#define SONOLET_USER_H

#include "Handle.h"
#include "Object.h"

// A user of the service, as script sees it. Made by Factory; script has no way to create one.
class User final : public Object {
public:
    User(sp_session* librarySession,
         sp_user* user,
         const orvo::shared_ptr<LibWrapper>& libraryShare);

private:
    void picture(jspp::function_context& context) const;
    void displayName(jspp::function_context& context) const;
    void canonicalName(jspp::function_context& context) const;
    void isLoaded(jspp::function_context& context) const;
    void relationType(jspp::function_context& context) const;
    void fullName(jspp::function_context& context) const;

    void releaseHandle() noexcept override { handle.release(); }

    Handle<sp_user> handle;
};

#endif
