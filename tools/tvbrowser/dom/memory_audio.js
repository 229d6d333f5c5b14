// How often audio is played from memory: <param name="cache" value="true"> and <param name="loop" value="2">, or
// "infinite". Other media are played once.
function playsOf(element) {
    const values = create(null);
    const params = elementsNamed(element, "param");
    for (let index = 0; index < params.length; ++index) {
        values[getAttribute(params[index], "name")] = trimmed(getAttribute(params[index], "value") || "");
    }
    const isAudio = startsWith(mimeTypeOf(element), "audio/");
    if (!isAudio || values.cache !== "true" || values.loop === undefined) {
        return 1;
    }
    const plays = values.loop === "infinite" ? Infinity : makeNumber(values.loop);
    return plays >= 1 && (plays === Infinity || plays % 1 === 0) ? plays : 1;
}
