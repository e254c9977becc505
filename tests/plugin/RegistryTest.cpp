#include "jspp/_detail/object_manager.h"
#include "jspp/object.h"

#include <gtest/gtest.h>

#include <stdexcept>

using jspp::__detail::object_manager;

namespace {

struct RegistryTest : testing::Test {
    object_manager registry;
    jsplugin_obj document{}, other{}, parent{}, child{}, function{};
};

}  // namespace

TEST_F(RegistryTest, AnObjectBelongsToItsParentsDocumentNotToItsParent) {
    registry.add_object(&parent, &document, true);
    registry.add_object(&child, &parent, true);
    registry.add_object(&function, &child, false);
    EXPECT_EQ(registry.find_most_parent(&function), &document);
    EXPECT_TRUE(registry.has_children(&child, &document));
    EXPECT_FALSE(registry.has_children(&child, &parent));
    EXPECT_FALSE(registry.does_exist(&document)) << "a document is no entry of its own";

    registry.remove_parent(&document);
    for (jsplugin_obj* gone : {&parent, &child, &function}) {
        EXPECT_FALSE(registry.does_exist(gone));
        EXPECT_FALSE(registry.has_children(gone, &document));
        try {
            registry.find_most_parent(gone);
            ADD_FAILURE() << "found the parent of a removed object";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "Can't find the parent of the given object!");
        }
    }
}

TEST_F(RegistryTest, AddingAgainReplacesTheEntryAndItsChildRecord) {
    registry.add_object(&child, &document, false);
    registry.add_object(&child, &other, true);
    EXPECT_EQ(registry.size(), 1U);
    registry.remove_parent(&document);
    EXPECT_TRUE(registry.does_exist(&child)) << "a stale child record took the new entry away";
    EXPECT_TRUE(registry.is_object(&child));
    registry.remove_object(&child);
    EXPECT_FALSE(registry.has_children(&child, &other));
    EXPECT_EQ(registry.size(), 0U);
    registry.remove_object(&child);
}

TEST(ObjectHandle, ToAKnownObjectLeavesTheEntryAndTheLastOneToAnUnknownTakesItAway) {
    object_manager& registry = jspp::__detail::objects();
    jsplugin_obj document{}, plain{}, unknown{};
    registry.add_object(&plain, &document, true);
    {
        const jspp::object first(&unknown, &plain);
        {
            const jspp::object second(&unknown, &plain);
            const jspp::object known(&plain, &document);
            EXPECT_TRUE(first == second) << "two handles to one script object are equal";
            EXPECT_FALSE(known == second);
            EXPECT_TRUE(registry.is_object(&plain)) << "a handle made a plain object a function";
        }
        EXPECT_EQ(registry.find_most_parent(&unknown), &document);
        EXPECT_FALSE(registry.is_object(&unknown));
    }
    EXPECT_FALSE(registry.does_exist(&unknown));
    EXPECT_TRUE(registry.does_exist(&plain));
    registry.remove_object(&plain);
}

TEST(ObjectHandle, OfAnUnloadedDocumentNeverReachesALaterObjectAtTheSameAddress) {
    object_manager& registry = jspp::__detail::objects();
    jsplugin_obj document{}, function{};
    {
        const jspp::object stale(&function, &document);
        registry.remove_parent(&document);
        EXPECT_EQ(stale.get(), nullptr);
        const jspp::object fresh(&function, &document);
        EXPECT_EQ(fresh.get(), &function);
        EXPECT_EQ(stale.get(), nullptr);
        EXPECT_FALSE(fresh == stale);
    }
    EXPECT_FALSE(registry.does_exist(&function)) << "the stale handle was counted with the fresh";
}
