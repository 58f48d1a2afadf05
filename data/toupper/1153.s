# The upper case of GOST_19768-74 RIGHT HALF.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as GOST_19768-74.

TOUPPER CHARSET GOST_19768-74-RIGHT-HALF

P=0 Q=1 R=2 S=3 T=4 U=5 V=6 W=7 X=8 Y=9 Z=: [=; \x5C=\x3C ]=\x3D ^=\x3E _=?
`=@ a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O q=!
