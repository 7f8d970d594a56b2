#include "RVGit/base/RVStandardInput.h"

#include <unistd.h>

RVStandardInput RVStandardInput::openFile(int descriptor) {
    return RVStandardInput(Source(std::in_place_index<3>,
                                  std::shared_ptr<const int>(new int(descriptor), [](int* number) {
                                      ::close(*number);
                                      delete number;
                                  })));
}
