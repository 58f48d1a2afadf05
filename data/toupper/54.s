# The upper case of ISO_5427-EXT.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as ISO_5427-EXT.

TOUPPER CHARSET ISO_5427-EXT

@=` A=a B=b C=c D=d E=e F=f G=g H=h I=i J=j K=k L=l M=m N=n P=p Q=q R=r S=s
