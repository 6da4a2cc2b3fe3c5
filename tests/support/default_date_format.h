/// A test fixture for the process-wide date settings.
#ifndef DEFAULT_DATE_FORMAT_H
#define DEFAULT_DATE_FORMAT_H

#include <gtest/gtest.h>
#include <zn_datetime.h>

/// Gives each test the default date settings, and restores the others afterwards.
class WithDefaultDateFormat : public testing::Test {
 protected:
  WithDefaultDateFormat() : before_(zn_lib::getDateTimeFormat()) {
    zn_lib::defaultDateTimeFormat();
  }
  ~WithDefaultDateFormat() override {
    zn_lib::setDateTimeFormat(before_.dateFormat, before_.monthFormat, before_.dateSeparator,
                              before_.dateTimeSeparator, before_.timeSeparator, before_.useTime);
  }

 private:
  const zn_lib::date_time_set before_;
};

#endif  // DEFAULT_DATE_FORMAT_H
