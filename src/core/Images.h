#pragma once

// Registers the pictures of images.qrc. They are compiled into the static ui library,
// whose resource initialiser the linker drops unless something refers to it; every form
// that shows a picture calls this before setupUi. Calling it again is harmless.
void initImages();
