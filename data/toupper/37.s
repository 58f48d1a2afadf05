# The upper case of ISO_5427.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as ISO_5427.
# These stay as they are, since the set does not have their upper case:
# _

TOUPPER CHARSET ISO_5427

@=` A=a B=b C=c D=d E=e F=f G=g H=h I=i J=j K=k L=l M=m N=n O=o P=p Q=q R=r
S=s T=t U=u V=v W=w X=x Y=y Z=z [={ \x5C=| ]=} ^=~
