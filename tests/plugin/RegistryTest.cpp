#include "../fakes/Inspection.h"
#include "../fakes/Test.h"
#include "jspp/_detail/object_manager.h"
#include "jspp/object.h"

using jspp::__detail::inspection;
using jspp::__detail::object_manager;

TEST(Registry, AnObjectBelongsToItsParentsDocumentUntilItIsAddedAgainOrTheDocumentGoes) {
    object_manager registry;
    jsplugin_obj document{}, other{}, parent{}, child{}, function{};
    registry.add_object(&parent, &document, true);
    registry.add_object(&child, &other, false);
    registry.add_object(&child, &parent, true);
    registry.add_object(&function, &child, false);
    EXPECT_EQ(inspection::size(registry), 3U);
    EXPECT_EQ(registry.find_most_parent(&function), &document);
    EXPECT_TRUE(registry.has_children(&child, &document) && registry.is_object(&child));
    EXPECT_FALSE(registry.has_children(&child, &parent));
    EXPECT_FALSE(registry.does_exist(&document)) << "a document is no entry of its own";
    registry.remove_parent(&other);
    EXPECT_TRUE(registry.does_exist(&child)) << "a stale child record took the new entry away";

    registry.remove_parent(&document);
    registry.remove_object(&parent);
    EXPECT_EQ(inspection::size(registry), 0U);
    EXPECT_FALSE(registry.does_exist(&function) || registry.has_children(&function, &document));
    try {
        registry.find_most_parent(&function);
        ADD_FAILURE() << "found the parent of a removed object";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Can't find the parent of the given object!");
    }
}

TEST(Registry, TheLastHandleToAnUnknownObjectTakesItsEntryAwayButNoKnownOneNorALaterOne) {
    object_manager& registry = jspp::__detail::objects();
    jsplugin_obj document{}, plain{}, unknown{};
    registry.add_object(&plain, &document, true);
    auto first = std::make_unique<jspp::object>(&unknown, &plain);
    {
        const jspp::object second(&unknown, &plain);
        const jspp::object known(&plain, &document);
        EXPECT_TRUE(*first == second) << "two handles to one script object are equal";
        EXPECT_FALSE(known == second);
        EXPECT_TRUE(registry.is_object(&plain)) << "a handle made a plain object a function";
    }
    EXPECT_EQ(registry.find_most_parent(&unknown), &document);
    EXPECT_FALSE(registry.is_object(&unknown));
    EXPECT_TRUE(registry.does_exist(&plain));
    registry.remove_parent(&document);
    EXPECT_EQ(first->get(), nullptr);
    {
        const jspp::object fresh(&unknown, &document);  // of a later document at the address
        EXPECT_EQ(first->get(), nullptr);
        EXPECT_FALSE(fresh == *first);
        first.reset();
        EXPECT_EQ(fresh.get(), &unknown) << "the stale handle was counted with the fresh";
    }
    EXPECT_EQ(inspection::size(registry), 0U);
}
