// main() of every test program: exactly one log4cplus initialiser for the whole process.
#include <gtest/gtest.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>

int main(int argc, char** argv)
{
    log4cplus::Initializer initializer;
    // Nothing reaches the console unless a test captures it.
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::OFF_LOG_LEVEL);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
