#pragma once

// Seeds rand() from the time of day (milliseconds) times time(0).
void seedRandomFromClock();
