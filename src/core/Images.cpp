#include "core/Images.h"

#include <QtGlobal>

void initImages()
{
    Q_INIT_RESOURCE(images);
}
