// Parental ratings of programmes, from the broadcast's parental rating descriptors.

// ISO 3166 codes of three letters, as the broadcast has them, to those of two.
const regions = {
    AUT: "AT",
    BEL: "BE",
    BGR: "BG",
    CHE: "CH",
    CYP: "CY",
    CZE: "CZ",
    DEU: "DE",
    DNK: "DK",
    ESP: "ES",
    EST: "EE",
    FIN: "FI",
    FRA: "FR",
    GBR: "GB",
    GRC: "GR",
    HRV: "HR",
    HUN: "HU",
    IRL: "IE",
    ISL: "IS",
    ITA: "IT",
    LTU: "LT",
    LUX: "LU",
    LVA: "LV",
    MLT: "MT",
    NLD: "NL",
    NOR: "NO",
    POL: "PL",
    PRT: "PT",
    ROU: "RO",
    RUS: "RU",
    SRB: "RS",
    SVK: "SK",
    SVN: "SI",
    SWE: "SE",
    TUR: "TR",
    UKR: "UA",
    AUS: "AU",
    NZL: "NZ",
};

const lowestRating = 0x01;
const highestRating = 0x0f;
const ageOfRatingZero = 3;
const ageScheme = "dvb-si";

class ParentalRating {
    // Without an age it is none.
    constructor(age, region) {
        const name = age === undefined ? undefined : makeText(age);
        defineFields(this, { name, scheme: ageScheme, value: age, labels: 0, region });
    }
}

// Ratings that have no age (0, and what broadcasters define themselves) are left out.
function parentalRatingsOf(ratings) {
    const aged = those(ratings, ({ rating }) => rating >= lowestRating && rating <= highestRating);
    return new Collection(
        mapped(aged, ({ country, rating }) => new ParentalRating(rating + ageOfRatingZero, regions[country]))
    );
}
