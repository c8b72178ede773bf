// DialogPicture: the picture of the settings dialog, "dialog1012.png".
//
// 342 x 226 pixels, opaque RGB: a night-blue ground that darkens downwards,
// faint diagonal lines, the maker's name and the production's title in the
// upper quarter (above the size list), and a hairline under them.
#pragma once
#include "Image.h"
#include "Lettering.h"

Image makeDialogPicture(Typeface& sans, Typeface& bold);
