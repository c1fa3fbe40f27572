#!/usr/bin/env python3
"""Makes a Windows system volume in a directory, with registry hives, for tests; prints nothing.

    make_volume.py DIR [--user NAME]... [--narrow] [--dirty HIVE]... [--corrupt HIVE]...
                       [--no-header HIVE]... [--missing HIVE]...

What DIR holds already stays, unless it is made anew. HIVE is SYSTEM, SOFTWARE, SAM, SECURITY or DEFAULT. Without
--user there are "alice" (S-1-5-21-1-2-3-1001) and "Böb" (S-1-5-21-1-2-3-1002). --narrow makes a
system of 32 bits. --dirty leaves a hive's header open; --corrupt spoils cells in the middle of it;
--no-header makes it something else altogether.
"""

import argparse
import pathlib
import sys

sys.dont_write_bytecode = True

from hive_builder import (BINARY, DWORD, EXPAND_SZ, KEY_LINK, MULTI_SZ, NONE, QWORD, SZ, Hive,
                          dword, text, texts)

SID = 'S-1-5-21-1-2-3-'


def system_hive(narrow, dirty):
    hive = Hive('\\SystemRoot\\System32\\Config\\SYSTEM', dirty)
    select = hive.root.sub('Select')
    for name, number in (('Current', 1), ('Default', 1), ('Failed', 0), ('LastKnownGood', 2)):
        select.set(name, DWORD, dword(number))
    for number in (1, 2):
        control_set = hive.root.sub(f'ControlSet00{number}')
        control_set.sub('Control\\ComputerName\\ComputerName').set(
            'ComputerName', SZ, text(f'VOLUME-{number}'))
        environment = control_set.sub('Control\\Session Manager\\Environment')
        environment.set('PROCESSOR_ARCHITECTURE', SZ, text('x86' if narrow else 'AMD64'))
        environment.set('NUMBER_OF_PROCESSORS', SZ, text('2'))
        environment.set('OS', SZ, text('Windows_NT'))
        environment.set('Path', EXPAND_SZ,
                        text('%SystemRoot%\\system32;%SystemRoot%;%SystemRoot%\\System32\\Wbem'))
        environment.set('TEMP', EXPAND_SZ, text('%SystemRoot%\\TEMP'))
        environment.set('windir', EXPAND_SZ, text('%SystemRoot%'))
        control_set.sub('Control\\ProductOptions').set('ProductType', SZ, text('WinNT'))
        control_set.sub('Control\\Windows').set('SystemDirectory', EXPAND_SZ,
                                                text('%SystemRoot%\\system32'))
        control_set.sub('Control\\Nls\\CodePage').set('ACP', SZ, text('1252'))
        control_set.sub('Control\\TimeZoneInformation').set(
            'TimeZoneKeyName', SZ, text('W. Europe Standard Time'))
        control_set.sub('Control\\Lsa\\JD', class_name='4f8aa1c2')
        add_services(control_set)
        control_set.sub('Hardware Profiles\\0001\\Software\\Fonts').set('LogPixels', DWORD,
                                                                        dword(96))
        control_set.link('Hardware Profiles\\Current',
                         '\\Registry\\Machine\\System\\CurrentControlSet\\Hardware Profiles\\0001')
    hive.root.sub('Setup').set('SystemPartition', SZ, text('\\Device\\HarddiskVolume1'))
    hive.root.sub('MountedDevices').set('\\DosDevices\\C:', BINARY, bytes(range(24)))
    return hive


def add_services(control_set):
    services = (
        ('Dhcp', 0x20, 2, '%SystemRoot%\\system32\\svchost.exe -k LocalServiceNetworkRestricted'),
        ('Spooler', 0x110, 2, '%SystemRoot%\\System32\\spoolsv.exe'),
        ('disk', 1, 0, 'System32\\drivers\\disk.sys'),
    )
    for name, kind, start, image in services:
        service = control_set.sub(f'Services\\{name}')
        service.set('Type', DWORD, dword(kind)).set('Start', DWORD, dword(start))
        service.set('ErrorControl', DWORD, dword(1))
        service.set('ImagePath', EXPAND_SZ, text(image))
        service.set('DisplayName', SZ, text(f'{name} service'))
        service.set('DependOnService', MULTI_SZ, texts('Afd', 'NSI'))


def software_hive(narrow, dirty, users):
    hive = Hive('\\SystemRoot\\System32\\Config\\SOFTWARE', dirty)
    views = [('', 'AMD64')] if narrow else [('', '64'), ('Wow6432Node\\', '32')]
    for prefix, width in views:
        version = hive.root.sub(prefix + 'Microsoft\\Windows NT\\CurrentVersion')
        version.set('ProductName', SZ, text('Windows 10 Pro'))
        version.set('CurrentVersion', SZ, text('6.3'))
        version.set('CurrentMajorVersionNumber', DWORD, dword(10))
        version.set('CurrentMinorVersionNumber', DWORD, dword(0))
        version.set('CurrentBuild', SZ, text('19045'))
        version.set('CurrentBuildNumber', SZ, text('19045'))
        version.set('EditionID', SZ, text('Professional'))
        version.set('InstallationType', SZ, text('Client'))
        version.set('SystemRoot', SZ, text('C:\\Windows'))
        folders = hive.root.sub(prefix + 'Microsoft\\Windows\\CurrentVersion')
        folders.set('ProgramFilesDir', SZ,
                    text('C:\\Program Files' + (' (x86)' if width == '32' else '')))
        folders.set('CommonFilesDir', SZ, text('C:\\Program Files' + (
            ' (x86)' if width == '32' else '') + '\\Common Files'))
        if not narrow:
            folders.set('ProgramFilesDir (x86)', SZ, text('C:\\Program Files (x86)'))
        folders.sub('Run').set('Tray' + width, EXPAND_SZ, text('%ProgramFiles%\\Tray\\tray.exe'))
    add_shell_folders(hive.root.sub('Microsoft\\Windows\\CurrentVersion\\Explorer'), {
        'Common Desktop': '%PUBLIC%\\Desktop',
        'Common AppData': '%ProgramData%',
        'Common Start Menu': '%ProgramData%\\Microsoft\\Windows\\Start Menu',
        'Common Startup': '%ProgramData%\\Microsoft\\Windows\\Start Menu\\Programs\\Startup'})
    add_profiles(hive.root.sub('Microsoft\\Windows NT\\CurrentVersion\\ProfileList'), users)
    add_classes(hive.root.sub('Classes'), narrow)
    if not narrow:
        hive.root.link('Wow6432Node\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList',
                       '\\Registry\\Machine\\Software\\Microsoft\\Windows NT\\CurrentVersion\\'
                       'ProfileList')
        hive.root.link('Wow6432Node\\Classes',
                       '\\Registry\\Machine\\Software\\Classes\\Wow6432Node')
    add_odd_values(hive.root.sub('Kestra'))
    add_links(hive.root.sub('Kestra\\Links'))
    return hive


def add_shell_folders(explorer, folders):
    for name, path in folders.items():
        explorer.sub('User Shell Folders').set(name, EXPAND_SZ, text(path))


def add_profiles(profiles, users):
    profiles.set('ProfilesDirectory', EXPAND_SZ, text('%SystemDrive%\\Users'))
    profiles.set('ProgramData', EXPAND_SZ, text('%SystemDrive%\\ProgramData'))
    profiles.set('Public', EXPAND_SZ, text('%SystemDrive%\\Users\\Public'))
    for sid, path in (('S-1-5-18', '%systemroot%\\system32\\config\\systemprofile'),
                      ('S-1-5-19', '%systemroot%\\ServiceProfiles\\LocalService')):
        profiles.sub(sid).set('ProfileImagePath', EXPAND_SZ, text(path))
    for number, name in enumerate(users, 1001):
        profiles.sub(f'{SID}{number}').set('ProfileImagePath', EXPAND_SZ,
                                           text(f'%SystemDrive%\\Users\\{name}'))


def add_classes(classes, narrow):
    classes.sub('.txt').set('', SZ, text('txtfile'))
    classes.sub('txtfile\\shell\\open\\command').set('', EXPAND_SZ,
                                                     text('%SystemRoot%\\notepad.exe %1'))
    classes.sub('CLSID\\{0000-64}').set('', SZ, text('wide class'))
    if not narrow:
        classes.sub('Wow6432Node\\CLSID\\{0000-32}').set('', SZ, text('narrow class'))


def add_odd_values(key):
    """What readers of values stumble over."""
    key.set('', SZ, text('the default value'))
    key.set('NoTerminator', SZ, text('abc', terminated=False))
    key.set('OddLength', SZ, text('abc') + b'x')
    key.set('OneByte', SZ, b'x')
    key.set('Empty', SZ, b'')
    key.set('List', MULTI_SZ, texts('one', '', 'three') + b'\0\0')
    key.set('ListOpen', MULTI_SZ, text('one\0two', terminated=False))
    key.set('Half', SZ, b'a\0\x00\xd8b\0\0\0')
    key.set('ShortNumber', DWORD, b'\x01\x02')
    key.set('LongNumber', DWORD, bytes(range(1, 9)))
    key.set('Quad', QWORD, bytes(range(8)))
    key.set('None', NONE, b'')
    key.set('Strange', 0x80000001, b'\x01\x02\x03\x04\x05')
    key.set('Bytes', BINARY, bytes(range(256)))
    key.set('Big', BINARY, bytes(i * 7 & 0xFF for i in range(40000)))
    key.set('Ünïcode', SZ, text('größe'))
    key.set('Имя', SZ, text('значение'))
    key.sub('Ключ').set('', SZ, text('a name in 16 bits'))
    key.sub('Größe').set('', SZ, text('a name in 8 bits'))
    key.sub('Wide', wide_name=True).set('', SZ, text('8 bits would have done'))


def add_links(key):
    machine = '\\Registry\\Machine\\Software\\'
    for name, target in (('Good', machine + 'Kestra'), ('ToDefault', '\\REGISTRY\\USER\\.DEFAULT'),
                         ('Round', machine + 'Kestra\\Links\\About'),
                         ('About', machine + 'Kestra\\Links\\Round'),
                         ('Below', machine + 'Kestra\\Links\\Below\\Further'),
                         ('Nowhere', machine + 'Not There'), ('Outside', '\\Device\\Disk')):
        key.link(name, target)
    key.sub('NoTarget', flags=KEY_LINK)


def user_hive(name, dirty=False):
    hive = Hive('\\Users\\ntuser.dat', dirty)
    hive.root.sub('Environment').set('TEMP', EXPAND_SZ,
                                     text('%USERPROFILE%\\AppData\\Local\\Temp'))
    hive.root.sub('Control Panel\\Desktop').set('Owner', SZ, text(name))
    hive.root.sub('Volatile Environment').set('USERNAME', SZ, text(name))
    explorer = hive.root.sub('Software\\Microsoft\\Windows\\CurrentVersion\\Explorer')
    add_shell_folders(explorer, {
        'Desktop': '%USERPROFILE%\\Desktop', 'AppData': '%USERPROFILE%\\AppData\\Roaming',
        'Local AppData': '%USERPROFILE%\\AppData\\Local', 'Personal': '%USERPROFILE%\\Documents'})
    return hive


def classes_hive(name):
    hive = Hive('\\Users\\usrclass.dat')
    hive.root.sub('.txt').set('', SZ, text(f'{name}.txtfile'))
    hive.root.sub(f'.{name}').set('', SZ, text('own'))
    hive.root.sub('CLSID\\{0000-USER}').set('', SZ, text('wide class of the user'))
    hive.root.sub('Wow6432Node\\CLSID\\{0000-USER32}').set('', SZ, text('narrow class of the user'))
    return hive


def spoil(content):
    """Cells in the middle get sizes and offsets that lead nowhere."""
    content = bytearray(content)
    for place in range(0x1000 + 0x800, len(content) - 8, 0x400):
        content[place:place + 8] = b'\xff\xff\xff\x7f\xde\xad\xbe\xef'
    return bytes(content)


def write(path, content):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('directory', type=pathlib.Path)
    parser.add_argument('--user', action='append', default=[])
    parser.add_argument('--narrow', action='store_true')
    for option in ('--dirty', '--corrupt', '--no-header', '--missing'):
        parser.add_argument(option, action='append', default=[], metavar='HIVE')
    options = parser.parse_args()
    users = options.user or ['alice', 'Böb']
    volume = options.directory

    small = {name: Hive(name, name in options.dirty) for name in ('SAM', 'SECURITY', 'DEFAULT')}
    small['SAM'].root.sub('SAM\\Domains\\Account').set('F', BINARY, bytes(80))
    small['SECURITY'].root.sub('Policy\\PolAcDmN').set('', NONE, text('VOLUME'))
    small['DEFAULT'].root.sub('Control Panel\\Desktop').set('Owner', SZ, text('.DEFAULT'))
    hives = {'SYSTEM': system_hive(options.narrow, 'SYSTEM' in options.dirty),
             'SOFTWARE': software_hive(options.narrow, 'SOFTWARE' in options.dirty, users), **small}
    for name, hive in hives.items():
        content = hive.to_bytes()
        if name in options.corrupt:
            content = spoil(content)
        if name in options.no_header:
            content = b'this was a hive once' + content[20:]
        if name not in options.missing:
            write(volume / 'Windows/System32/config' / name, content)

    for name in users:
        profile = volume / 'Users' / name
        write(profile / 'NTUSER.DAT', user_hive(name).to_bytes())
        write(profile / 'AppData/Local/Microsoft/Windows/UsrClass.dat',
              classes_hive(name).to_bytes())
        write(profile / 'Documents/Notes.TXT', b'first line\r\nsecond line\r\n')
    write(volume / 'Windows/ServiceProfiles/LocalService/NTUSER.DAT',
          user_hive('LocalService').to_bytes())
    for path in ('Windows/System32/drivers/etc/hosts', 'Windows/win.ini',
                 'Program Files/Mixed Case/ReadMe.Txt', 'ProgramData/Settings.INI'):
        write(volume / path, b'[Section]\r\nKey=value\r\n')


if __name__ == '__main__':
    main()
