// The page of the browser host: HTML, CSS and a little JavaScript, served
// from the program itself; nothing is fetched from elsewhere.
#pragma once

namespace orv::app::serve {

const char* PageHtml();

}  // namespace orv::app::serve
