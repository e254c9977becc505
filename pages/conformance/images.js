// Pictures.

"use strict";

add("SpImage", "track", function (done) {
    checkArguments("Spotify.SpImage", Spotify.SpImage, CREATE.SpImage);
    var id = "";
    try {
        id = found.album.cover(0);
    } catch (error) {
        skip("SpImage", "the album has no cover");
        done();
        return;
    }
    var image = Spotify.SpImage.create(id);
    watch("SpImage", image);
    until(function () { return image.isLoaded(); }, function () {
        found.image = image;
        checkObject("SpImage", image, -1);
        same("SpImage.error()", image.error(), 0);
        same("SpImage.id()", image.id(), id);
        same("SpImage.format()", image.format(), 0);
        same("SpImage.data() is a JPEG in Base64", image.data().slice(0, 4), "/9j/");
        same("SpImage.create(id) answers a new wrapper",
            Spotify.SpImage.create(id) === image, false);
        var nobody = Spotify.SpImage.create("AAAAAAAAAAAAAAAAAAAAAAAAAAA=");
        when(nobody, "ImageLoaded", always, function (told) {
            same("\"ImageLoaded\" brings its image", told, nobody);
            holds("an image that is nowhere has an error", nobody.error() !== 0, "0", "an error");
            throws("SpImage.data() without an image", function () { return nobody.data(); },
                "Image size is zero");
            done();
        });
    });
});
