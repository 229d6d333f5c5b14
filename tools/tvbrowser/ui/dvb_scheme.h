// DvbScheme: gives pages the files of object carousels under dvb://ONID.TSID.SID.TAG/PATH, from the broadcast. A file
// that is not there yet is waited for, as long as its service is presented and its page is shown.
// Threads: the main one.
// Blocks:  never.
// Fails:   a file that there is not is a network error in the page, and a line of the log names it.
#pragma once

#include <wpe/webkit.h>

#include <functional>
#include <map>
#include <string>

#include "carousel_question.h"

namespace tvbrowser {

class DvbScheme {
public:
    struct Carousels {
        /// Whether the view may ask: not one that has been left.
        std::function<bool(WebKitWebView* view)> mayAsk;
        std::function<QuestionNumber(const CarouselPlace&, TakeAnswer)> ask;
        std::function<void(QuestionNumber)> cancel;
    };
    using Log = std::function<void(const std::string&)>;

    /// Before the first page of the context.
    DvbScheme(WebKitWebContext* context, Carousels newCarousels, Log newLog);
    DvbScheme(const DvbScheme&) = delete;
    DvbScheme& operator=(const DvbScheme&) = delete;

    /// The view has been left: what it waits for fails. A script that waits would hold up the next page's process.
    void leave(WebKitWebView* view);

private:
    using Request = WebKitURISchemeRequest*;

    static void onRequest(Request request, gpointer self);
    void begin(Request request);
    void answer(Request request, const CarouselPlace& place, const CarouselAnswer& answer);
    void fail(Request request, const std::string& why);

    const Carousels carousels;
    const Log log;
    std::map<Request, QuestionNumber> waiting;  // a reference each
};

}  // namespace tvbrowser
