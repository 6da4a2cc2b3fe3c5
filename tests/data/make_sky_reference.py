#!/usr/bin/env python3
"""Makes the reference values that the tests of the day length and of the moon phase compare with.

Source: PyEphem 4.1, whose libastro computes the sun from VSOP87 and the moon from a truncated
ELP2000-82B. Both are far more accurate than the models of this library.

    /usr/bin/python3 tests/data/make_sky_reference.py

writes three files beside this script; the same PyEphem always writes the same bytes. All of them
cover the years 2000 to 2050, times are UT.

day_length_reference.csv    hours from the rise of the sun's upper limb to its setting, on the
                            meridian of Greenwich at sea level with 34' of refraction; one line per
                            date, one column per latitude
moon_phase_reference.csv    the geocentric ecliptic longitude of the moon less that of the sun, in
                            degrees, and the lit fraction of the moon's disc
moon_instants_reference.csv every new moon (0) and full moon (180)

Days of the moon count from Julian Date 2444238.5, as those of zn_lib::MoonPhase do.
"""

import datetime
import math
import pathlib

import ephem

DIRECTORY = pathlib.Path(__file__).resolve().parent
FIRST = datetime.date(2000, 1, 1)
LAST = datetime.date(2050, 12, 31)

# Neither divides the year or the month evenly, so that the rows cover every season and every phase.
DAYS_BETWEEN_DATES = 41
DAYS_BETWEEN_PHASES = 9.7731

LATITUDES = range(-60, 61, 10)

# ephem.Date counts days from Julian Date 2415020.0.
EPOCH = 2444238.5 - 2415020.0


def day_length(date, latitude, longitude=0.0):
    """Hours between the sunrise before and the sunset after the local noon of `date`."""
    place = ephem.Observer()
    place.lat, place.lon = math.radians(latitude), math.radians(longitude)
    place.elevation = 0.0
    place.pressure = 0.0  # libastro adds no refraction, which is part of the horizon
    place.horizon = "-0:34"
    noon = ephem.Date(ephem.Date((date.year, date.month, date.day, 12)) - longitude / 360.0)
    sun = ephem.Sun()
    place.date = noon
    rise = place.previous_rising(sun)
    place.date = noon
    return (place.next_setting(sun) - rise) * 24.0


def ecliptic_longitude(body, date):
    """The apparent longitude in degrees, for the equinox of `date`."""
    return math.degrees(
        ephem.Ecliptic(ephem.Equatorial(body.g_ra, body.g_dec, epoch=date), epoch=date).lon)


def moon_phase(days):
    """Longitude difference in degrees and lit fraction."""
    date = ephem.Date(days + EPOCH)
    sun, moon = ephem.Sun(date), ephem.Moon(date)
    angle = (ecliptic_longitude(moon, date) - ecliptic_longitude(sun, date)) % 360.0
    return angle, moon.phase / 100.0


def moon_instants(next_instant):
    """The days of all instants of one kind."""
    date = ephem.Date((FIRST.year, 1, 1))
    end = ephem.Date((LAST.year + 1, 1, 1))
    while (date := next_instant(date)) < end:
        yield date - EPOCH


def write(name, columns, rows):
    lines = [f"# {columns}; from PyEphem {ephem.__version__} by make_sky_reference.py", *rows]
    (DIRECTORY / name).write_text("\n".join(lines) + "\n", encoding="ascii")


def day_length_rows():
    date = FIRST
    while date <= LAST:
        hours = (f"{day_length(date, latitude):.4f}" for latitude in LATITUDES)
        yield ",".join([str(date.year), str(date.month), str(date.day), *hours])
        date += datetime.timedelta(DAYS_BETWEEN_DATES)


def moon_phase_rows():
    first = ephem.Date((FIRST.year, 1, 1)) - EPOCH
    end = ephem.Date((LAST.year + 1, 1, 1)) - EPOCH
    count = math.ceil((end - first) / DAYS_BETWEEN_PHASES)
    for days in (round(first + i * DAYS_BETWEEN_PHASES, 4) for i in range(count)):
        angle, illuminated = moon_phase(days)
        yield f"{days:.4f},{angle:.4f},{illuminated:.5f}"


def moon_instants_rows():
    instants = [(days, 0) for days in moon_instants(ephem.next_new_moon)]
    instants += [(days, 180) for days in moon_instants(ephem.next_full_moon)]
    return (f"{days:.5f},{angle}" for days, angle in sorted(instants))


def main():
    latitudes = ",".join(str(latitude) for latitude in LATITUDES)
    write("day_length_reference.csv", f"year,month,day, then hours at the latitudes {latitudes}",
          day_length_rows())
    write("moon_phase_reference.csv", "days,degrees,illuminated", moon_phase_rows())
    write("moon_instants_reference.csv", "days,degrees", moon_instants_rows())


if __name__ == "__main__":
    main()
