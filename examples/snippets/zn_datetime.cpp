// Reads a date, shifts it by a day, and writes it in several forms.
#include <zn_datetime.h>

#include <iostream>

int main() {
  // The settings are all zero until a host sets them.
  zn_lib::defaultDateTimeFormat();

  const unsigned long long julian = zn_lib::dateToJulian("2024-03-05T14:07:09");
  constexpr unsigned long long day = 86400000;
  std::cout << julian << '\n'
            << zn_lib::julianToISO(julian) << '\n'
            << zn_lib::julianToISO(julian + day) << '\n'
            << zn_lib::julianToYYYYMMDD(julian) << '\n';

  const zn_lib::date_time_set written = {
      zn_lib::DAY_MONTH_YEAR, zn_lib::MONTH_FULL_NAME, ' ', ',', ':', true};
  std::cout << zn_lib::formatJulianDate(julian, written) << '\n';

  // Text that is not a date reads as 1 January of year 0. An impossible date gives 0.
  std::cout << zn_lib::julianToISO(zn_lib::dateToJulian("hello")) << '\n'
            << zn_lib::dateToJulian("2023-02-29") << '\n'
            << std::boolalpha << zn_lib::isValidISOdate("hello") << '\n';

  // The third field is the year. An unknown month name counts as December.
  zn_lib::setDateFormat(zn_lib::DAY_MONTH_YEAR);
  zn_lib::setUseTime(false);
  std::cout << zn_lib::dateToISO("05 March 2024") << ", month " << zn_lib::getMonthNumber("xyz")
            << '\n';
}
