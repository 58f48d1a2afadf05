# The upper case of GREEK7-OLD.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as GREEK7-OLD.

TOUPPER CHARSET GREEK7-OLD

A=a B=b C=c D=d E=e F=f G=g H=h I=i J=j K=k L=l M=m N=n O=o P=p R=r S=s T=t
U=u V=v W=s X=x Y=y Z=z
