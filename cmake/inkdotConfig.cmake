# inkdot's CMake package: find_package(inkdot 0.1 CONFIG REQUIRED), then
# link inkdot::inkdot (the engine, inkdot/inkdot.h), inkdot::inkdot_static, or
# inkdot::driver (the driver layer with the built-in pack, inkdot/inkdot_job.h).
include(${CMAKE_CURRENT_LIST_DIR}/inkdotTargets.cmake)
