// Covers and portraits: their loading, their data, and ids that lead nowhere.
const { SpImage, SP_IMAGE_FORMAT } = Spotify;

async function image(id) {
    const made = SpImage.create(id);
    if (!made.isLoaded()) {
        const [loaded] = await test.next(made, "ImageLoaded");
        test.same(loaded, made, "the event brings its picture");
    }
    return made;
}

test.run(
    async () => {
        test.throws(() => SpImage.create("x"), "Spotify not initialized correctly");
        test.same(await test.login(), 0, "logged in");
        test.throws(() => SpImage.create(), "Not enough arguments");
        test.throws(() => SpImage.create(5), "Not a string");
        const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        const lengths = [];
        for (const size of [1, 0, 2]) {
            const id = track.album().cover(size);
            const cover = await image(id);
            test.same(cover.error(), 0, "a cover without error");
            test.same(cover.id(), id, "its id");
            test.same(cover.format(), SP_IMAGE_FORMAT.SP_IMAGE_FORMAT_JPEG, "its format");
            test.same(cover.data().slice(0, 4), "/9j/", "its data is a JPEG");
            lengths.push(cover.data().length);
            test.ok(SpImage.create(id) !== cover, "another wrapper each time");
        }
        test.ok(lengths[0] < lengths[1] && lengths[1] <= lengths[2], "three sizes");
        const portrait = await image(track.artist(0).portrait(0));
        test.same(portrait.data().slice(0, 4), "/9j/", "a portrait");
    },
    async () => {
        const nobody = SpImage.create("AAAAAAAAAAAAAAAAAAAAAAAAAAA=");
        await new Promise((resolve) => { nobody.onImageLoaded = resolve; });
        test.ok(nobody.error() !== 0 && nobody.error() !== Spotify.SP_ERROR.SP_ERROR_IS_LOADING,
            "an unknown id is an error");
        test.throws(() => nobody.data(), "Image size is zero");
        const short = SpImage.create("AAAA");
        test.same(short.id(), "AAAAAAAAAAAAAAAAAAAAAAAAAAA=", "a short id is filled up");
    },
    async () => {
        const track = await test.loaded(Spotify.Track.create(LINKS["Fog Signal"]));
        const cover = await image(track.album().cover(0));
        const out = test.next(Spotify.Session, "LoggedOut");
        Spotify.Session.logout();
        await out;
        test.same(cover.data, undefined, "a cleared picture has no members");
        test.same(typeof cover.addEventListener, "function", "but for its listeners");
    });
