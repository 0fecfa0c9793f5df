# The release binary without CMake, as OpenBench workers build it:
#   make -j EXE=/path/Name CXX=g++        (CC=gcc or CC=clang works too)
# The same optimisation and link-time flags as the CMake release build. The
# sources are every .cpp under src/, so a new file needs no edit here.
# Objects go to OBJDIR inside the tree; nothing is written outside it but EXE.
# Extra CXXFLAGS and LDFLAGS are added after the project's own.

EXE ?= tolva
OBJDIR ?= build-make

# A C compiler named on its own stands for its C++ driver.
ifeq ($(origin CC),command line)
  ifneq ($(origin CXX),command line)
    ifneq ($(findstring ++,$(CC)),)
      CXX := $(CC)
    else ifeq ($(CC),cc)
      CXX := c++
    else
      CXX := $(subst gcc,g++,$(subst clang,clang++,$(CC)))
    endif
  endif
endif

# g++'s objects carry only the link-time code, as in the CMake build; clang has no such switch.
ifneq ($(findstring clang,$(shell $(CXX) --version 2>/dev/null)),)
  TOLVA_LTO := -flto=auto
else
  TOLVA_LTO := -flto=auto -fno-fat-lto-objects
endif

TOLVA_CXXFLAGS := -std=c++20 -O3 -DNDEBUG $(TOLVA_LTO) -Wall -Wextra -Isrc -pthread
TOLVA_LDFLAGS := -O3 -flto=auto -pthread
TOLVA_LIBS := -lz -llzma

SOURCES := $(sort $(shell find src -name '*.cpp'))
OBJECTS := $(SOURCES:%.cpp=$(OBJDIR)/%.o)

.PHONY: all clean
all: $(EXE)

# '+': the link-time optimisation shares make's job slots.
$(EXE): $(OBJECTS)
	+$(CXX) $(TOLVA_LDFLAGS) $(LDFLAGS) $(OBJECTS) -o $@ $(TOLVA_LIBS)

$(OBJDIR)/%.o: %.cpp
	@mkdir -p $(dir $@)
	$(CXX) $(TOLVA_CXXFLAGS) $(CXXFLAGS) -MMD -MP -c $< -o $@

clean:
	rm -rf $(OBJDIR)

-include $(OBJECTS:.o=.d)
