// application/oipfParentalControlManager: the scheme of ratings that the set knows. And what a video/broadcast object tells
// of the ratings of the presented programme. The set blocks nothing, so nobody has set a least age.

// DVB's ages are no list of values.
class ParentalRatingScheme extends Collection {
    constructor() {
        super([]);
        defineFields(this, { name: ageScheme, threshold: new ParentalRating() });
    }
    indexOf() {
        return -1;
    }
    iconUri() {
        return undefined;
    }
}

class ParentalRatingSchemeCollection extends Collection {
    #schemes;

    constructor(schemes) {
        super(schemes);
        this.#schemes = schemes;
    }
    getParentalRatingScheme(name) {
        return those(this.#schemes, (scheme) => scheme.name === name)[0] || null;
    }
}

const ratingSchemes = new ParentalRatingSchemeCollection([new ParentalRatingScheme()]);

class ParentalControlManager {
    get parentalRatingSchemes() {
        return ratingSchemes;
    }
}

defineType(["application/oipfParentalControlManager"], ParentalControlManager);

const toldRatings = new PrivateWeakMap(); // control -> the ratings that its page knows, as one text

// Tells an object of the ratings of what it presents, when they have changed.
function tellRatings(control) {
    const isPresenting = control.playState === playStates.presenting;
    const programme = isPresenting ? presentAndFollowing(control.channel)[0] : undefined;
    const ratings = programme ? programme.parentalRatings : new Collection([]);
    const news = joined(
        mapped(ratings, ({ value, region }) => value + " " + region),
        ", "
    );
    if (isPresenting && news !== (toldRatings.get(control) || "")) {
        control.tell("ParentalRatingChange", { contentID: undefined, ratings, DRMSystemID: null, blocked: false });
    }
    toldRatings.set(control, news);
}

onSignal("programmesChanged", () => {
    if (controlling && state.broadcastRelated) {
        tellRatings(controlling);
    }
});
