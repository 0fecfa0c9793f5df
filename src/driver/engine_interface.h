#pragma once

// What the game side calls back into the protocol front end.
class EngineInterface {
 public:
  virtual ~EngineInterface() = default;
};
